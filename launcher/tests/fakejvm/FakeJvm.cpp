// A JVM library that never creates a JVM: appends the options that it is given
// to the file "options", a line each, and gives back FAKE_JVM_RESULT.
#include <jni.h>

#include <cstdlib>
#include <fstream>

jint JNICALL JNI_CreateJavaVM(JavaVM**, void**, void* arguments)
{
    const auto* init = static_cast<const JavaVMInitArgs*>(arguments);
    std::ofstream record("options", std::ios::app);
    for (jint i = 0; i < init->nOptions; ++i) record << init->options[i].optionString << '\n';
    const char* const result = std::getenv("FAKE_JVM_RESULT");
    return result ? std::atoi(result) : JNI_ERR;
}
