// JvmTest: a test with a real JVM in its own process, for every JDK.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <jni.h>

#include "JavaVmManager.h"
#include "Jdk.h"
#include "JvmEnv.h"
#include "RecordingLogger.h"
#include "ScopedCatalogue.h"
#include "TextConversion.h"

class JvmTest : public testing::TestWithParam<Jdk> {
protected:
    ~JvmTest() override { manager_.unload(); }

    void createJvm() { manager_.load({L"-XX:-UsePerfData"}, toWide(GetParam().second), 0); }
    [[nodiscard]] JavaVM* jvm() const
    {
        using Getter = jint(JNICALL*)(JavaVM**, jsize, jsize*);
        void* const library = dlopen(GetParam().second.c_str(), RTLD_NOW | RTLD_NOLOAD);
        const auto get = reinterpret_cast<Getter>(dlsym(library, "JNI_GetCreatedJavaVMs"));
        JavaVM* jvm = nullptr;
        jsize count = 0;
        get(&jvm, 1, &count);
        return jvm;
    }

    ScopedCatalogue messages_;
    RecordingLogger log_;
    JavaVmManager manager_{L"java/lang/String", 8};
};
