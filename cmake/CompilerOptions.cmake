# launcher_options: the compiler's and linker's options of all our targets.
include(CheckPIESupported)
check_pie_supported()

find_package(Threads REQUIRED)

add_library(launcher_options INTERFACE)
target_compile_options(launcher_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wundef)
# The JVM walks our frames by them: see StackEnd.h.
target_compile_options(launcher_options INTERFACE -fno-omit-frame-pointer)
target_link_libraries(launcher_options INTERFACE Threads::Threads ${CMAKE_DL_LIBS})

if(LAUNCHER_WARNINGS_AS_ERRORS)
    target_compile_options(launcher_options INTERFACE -Werror)
endif()

if(LAUNCHER_HARDENING)
    # -U first: some distributions define it on their own.
    target_compile_options(launcher_options INTERFACE
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong
        -fstack-clash-protection -fcf-protection=full)
    target_link_options(launcher_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
endif()

if(LAUNCHER_STATIC_RUNTIME)
    # A library fewer to find, map and relocate, and no need for it where the
    # launcher runs; what it does not use of it is left out. libgcc, which every
    # machine has, stays apart: linked in, it would ask for the C library of
    # the compiler's own age (_dl_find_object, glibc 2.35).
    target_compile_options(launcher_options INTERFACE -ffunction-sections -fdata-sections)
    target_link_options(launcher_options INTERFACE
        -static-libstdc++ -Wl,--gc-sections)
endif()

if(LAUNCHER_SANITIZE)
    target_compile_options(launcher_options INTERFACE
        -fsanitize=${LAUNCHER_SANITIZE} -fno-sanitize-recover=all)
    # Types that two loaded libraries share are not the same ones to its check.
    target_compile_options(launcher_options INTERFACE
        $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
    # The sanitizers' own code misleads GCC here (its manual, "-fsanitize").
    target_compile_options(launcher_options INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(launcher_options INTERFACE -fsanitize=${LAUNCHER_SANITIZE})
    if(LAUNCHER_SANITIZE STREQUAL "thread")
        target_compile_options(launcher_options INTERFACE
            "SHELL:-include ${CMAKE_CURRENT_LIST_DIR}/ThreadSanitizer.h")
    endif()
endif()

if(LAUNCHER_FUZZ)
    # Lets the fuzzers see which branches an input takes; they alone link the
    # library that does (launcher/fuzz).
    target_compile_options(launcher_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
