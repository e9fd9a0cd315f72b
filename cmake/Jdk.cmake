# The JDK that gives jni.h and compiles the Java classes, ours and those of the
# tests; from 17.0.3 on, whose jar can set the time of the entries. The launcher
# itself links nothing of it.
find_package(Java 17.0.3 REQUIRED COMPONENTS Development)
file(REAL_PATH "${Java_JAVAC_EXECUTABLE}" LAUNCHER_JAVAC)
cmake_path(GET LAUNCHER_JAVAC PARENT_PATH LAUNCHER_JDK_BIN)
cmake_path(GET LAUNCHER_JDK_BIN PARENT_PATH LAUNCHER_JDK_HOME)
find_path(LAUNCHER_JNI_INCLUDE jni.h PATHS "${LAUNCHER_JDK_HOME}/include" NO_DEFAULT_PATH REQUIRED)

add_library(launcher_jni INTERFACE)
target_include_directories(launcher_jni SYSTEM INTERFACE
    "${LAUNCHER_JNI_INCLUDE}" "${LAUNCHER_JNI_INCLUDE}/linux")
