#!/usr/bin/env bash
# What the scripts share: messages, missing packages, JDKs, builds. To be
# sourced; sets ROOT, the repository.
set -euo pipefail

ROOT=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
readonly ROOT
readonly OLDEST_JAVA=17
readonly LLVM=14  # what clang-format prints differs from version to version

say() {
    printf '\n== %s\n' "$*"
}

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# as_root COMMAND...
as_root() {
    if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

# missing_packages PROBE=PACKAGE...: the packages whose probe finds nothing. A
# probe is a command, a file (with its slashes) or a function of this library.
missing_packages() {
    local pair probe
    for pair in "$@"; do
        probe=${pair%%=*}
        if [[ $probe == /* ]]; then
            [[ -e $probe ]] || printf '%s\n' "${pair#*=}"
        elif ! command -v "$probe" >/dev/null || { is_function "$probe" && ! "$probe" >/dev/null; }; then
            printf '%s\n' "${pair#*=}"
        fi
    done | sort -u
}

is_function() {
    [[ $(type -t "$1") == function ]]
}

# install_missing PROBE=PACKAGE...: installs what is missing, from Debian.
install_missing() {
    local packages
    mapfile -t packages < <(missing_packages "$@")
    if ((${#packages[@]} == 0)); then return; fi
    local -r hint="missing on this machine: ${packages[*]}"
    command -v apt-get >/dev/null || fail "$hint (packages of Debian; no apt-get here to install them)"
    ((EUID == 0)) || command -v sudo >/dev/null || fail "$hint (run as root, or install sudo)"

    say "Installing ${packages[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${packages[@]}"
    mapfile -t packages < <(missing_packages "$@")
    ((${#packages[@]} == 0)) || fail "still missing after the installation: ${packages[*]}"
}

# java_version HOME: the feature version of a JDK, 0 when it cannot be told.
java_version() {
    local version
    version=$(sed -n 's/^JAVA_VERSION="\([0-9]*\).*/\1/p' "$1/release" 2>/dev/null) || true
    printf '%s\n' "${version:-0}"
}

is_usable_jdk() {
    [[ -x $1/bin/javac && -f $1/include/jni.h && -f $1/lib/server/libjvm.so ]] &&
        (($(java_version "$1") >= OLDEST_JAVA))
}

# find_jdks: the homes of all JDKs that can build and run the launcher's
# services, that of JAVA_HOME first. Fails when there is none.
find_jdks() {
    local home
    local -A seen=()
    for home in "${JAVA_HOME:-}" /usr/lib/jvm/*; do
        [[ -d $home ]] || continue
        home=$(realpath -- "$home")
        if [[ -n ${seen[$home]:-} ]] || ! is_usable_jdk "$home"; then continue; fi
        seen[$home]=yes
        printf '%s\n' "$home"
    done
    ((${#seen[@]} > 0))
}

# The first of them.
find_jdk() {
    local homes
    homes=$(find_jdks) && printf '%s\n' "${homes%%$'\n'*}"
}

# install_locale NAME SOURCE CHARSET, unless the system has it.
install_locale() {
    LC_ALL=$1 locale charmap 2>/dev/null | grep -qx "$3" || as_root localedef -i "$2" -f "$3" "$1"
}

# The library of libFuzzer, whose path holds the whole version of clang.
has_fuzzer_runtime() {
    compgen -G "/usr/lib/llvm-$LLVM/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a"
}

# exec_fixed COMMAND...: becomes the command, with a fixed layout of the address
# space, which newer kernels spread wider than the sanitizers can follow; where
# that cannot be had, it may do without.
exec_fixed() {
    if setarch -R true 2>/dev/null; then exec setarch -R "$@"; else exec "$@"; fi
}

install_build_tools() {
    install_missing g++=g++ cmake=cmake ninja=ninja-build find_jdk=default-jdk-headless
}

install_test_tools() {
    install_build_tools
    install_missing /usr/include/gtest/gtest.h=libgtest-dev \
        /usr/share/i18n/locales/ru_RU=locales \
        /usr/share/java/jetty9-server.jar=libjetty9-java \
        /usr/share/bash-completion/bash_completion=bash-completion \
        groff=groff-base mandoc=mandoc zsh=zsh
    install_locale ru_RU.UTF-8 ru_RU UTF-8
    install_locale de_DE@euro de_DE@euro ISO-8859-15
}

install_clang() {
    install_missing "clang++-$LLVM=clang-$LLVM" has_fuzzer_runtime="libclang-rt-$LLVM-dev"
}

install_package_tools() {
    install_build_tools
    install_missing dpkg-shlibdeps=dpkg-dev file=file
    [[ ! -e $ROOT/.git ]] || install_missing git=git
}

install_machine_tools() {
    install_build_tools
    install_missing mmdebstrap=mmdebstrap systemd-nspawn=systemd-container pgrep=procps
}

# build PRESET [CMAKE_ARGUMENT...]
build() {
    local -r preset=$1
    local jdk
    jdk=$(find_jdk)
    (
        cd -- "$ROOT"
        JAVA_HOME=$jdk cmake --preset "$preset" "${@:2}" >/dev/null
        cmake --build --preset "$preset"
    )
}
