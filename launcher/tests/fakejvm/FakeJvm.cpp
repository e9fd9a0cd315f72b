// A JVM library that never creates a JVM: appends the options that it is given
// to the file "options", a line each, copies the file FAKE_JVM_KEEPS under its
// name with ".kept" behind and waits for the file FAKE_JVM_UNTIL, if those are
// set, and gives back FAKE_JVM_RESULT.
#include <jni.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "WaitUntil.h"

jint JNICALL JNI_CreateJavaVM(JavaVM**, void**, void* arguments)
{
    const auto* init = static_cast<const JavaVMInitArgs*>(arguments);
    std::ofstream record("options", std::ios::app);
    for (jint i = 0; i < init->nOptions; ++i) record << init->options[i].optionString << '\n';
    if (const char* const file = std::getenv("FAKE_JVM_KEEPS")) {
        std::ofstream(std::string(file) + ".kept") << std::ifstream(file).rdbuf();
    }
    if (const char* const file = std::getenv("FAKE_JVM_UNTIL")) {
        static_cast<void>(waitUntil([file] { return std::filesystem::exists(file); }));
    }
    const char* const result = std::getenv("FAKE_JVM_RESULT");
    return result ? std::atoi(result) : JNI_ERR;
}
