// Scenarios: the runs of the launcher in which its calls fail, each in a new
// directory. A shell prepares the directory and becomes the launcher.
#pragma once

#include <string>
#include <vector>

#include "Jdk.h"

struct Scenario {
    std::string name;
    /// Shell commands, with the functions of kShell, and with $target for the
    /// process id of the target.
    std::string command;
    /// Of a run in which nothing fails: its status, what it prints, as a regular
    /// expression, and a shell command that succeeds where its work is done.
    int status = 0;
    std::string text;
    std::string works = "true";
    std::string target = "";  ///< a shell command for a process beside the launcher
    bool waits = false;       ///< for a stop, once the file "ready" is there
    std::string jvm = FAKE_JVM;
    std::string program = LAUNCHER_EXECUTABLE;
};

// No ASCII: the launcher has to convert it, what is beyond U+FFFF by iconv.
inline constexpr char kPidFile[] = "служба😀.pid";

/// What the commands are made of.
inline constexpr char kShell[] = R"(
launcher() {
    export LD_PRELOAD="$shim"
    exec "$program" "$@"
}
stop() {
    mkdir logs
    launcher stop --clog logs/launcher.log "$@"
}
# What an earlier service has left, with a log of another user, where that can be,
# and a class path.
prepare() {
    mkdir logs jars
    [ -e "$pidfile" ] || printf 999999999 >"$pidfile"
    : >logs/launcher.log
    chown 65534:65534 logs/launcher.log 2>/dev/null
    : >jars/notes.txt  # no part of the class path
    ln -s "$service_jar" jars/service.jar
}
start() {
    prepare
    launcher start --clog logs/launcher.log --jclasspath "$PWD/jars/*.jar" \
        --jifaceclass service.Service --jvmdll "$jvm" --pidfile "$pidfile" "$@"
}
start_fake() {
    export JVM_OPTS="--jvmopt -Dx=1" NOTIFY_SOCKET=@nobody
    start --jvmopt -Xmx99m --cout out.txt --cerr err.txt \
        --instance "$PWD" --workdir "$PWD/new/place" "$@"
}
# An installed launcher with files of its own, which finds Java in JAVA_HOME.
start_installed() {
    prepare
    mkdir -p bin ini java/lib/server
    cp "$program" bin/launcher
    cat >bin/launcher.yml <<END
launcher-parameters:
  service-name: hello
  class-path: \${instance.root}/jars
  module-path: \${instance.root}/jars/service.jar
  main-class: service.Service
  pid-file: \${instance.root}/$pidfile
  log-file: \${launcher.dir}/../logs/launcher.log
  work-dir: \${instance.root}/work
END
    echo JAVA_OPT=-Xmx99m >ini/hello
    printf 'JAVA_VERSION="17"\nOS_ARCH="x86_64"\n' >java/release
    ln -s "$jvm" java/lib/server/libjvm.so
    ln -s "$inventory" bin/libinventory.so
    program=$PWD/bin/launcher
    export JAVA_HOME="$PWD/java"
    launcher start --instance "$PWD"
}
# place CALL: the lines of the sources that its way leads through.
place() {
    way=${1#*@}
    echo "${way%#*}" | tr , '\n' | addr2line -s -e "$program" | sed 's/ .*//' | tr '\n' '<'
}
# target ACTION: a process that owns the PID file, and what it does with the
# signals of a stop.
target() {
    trap "$1" USR1 USR2
    mkfifo never
    exec 3<>never
    printf $$ >"$pidfile"
    read -r never <&3
}
)";

/// The scenarios that need no JVM, and those with `all` JDKs or with one.
inline std::vector<Scenario> scenarios(bool all)
{
    const std::string old = "export FAULT_NO_PIDFD=; ";
    const std::string stopped = "Launcher with PID=[0-9]+ stopped gracefully\n";
    const std::string killed =
        "Launcher with PID=[0-9]+ was forced to stop and its PID-file was removed\n";
    const std::string noJvm = "Cannot create JVM 8 instance with library '.*\n";
    const std::string owned = "PID file exists and the process with PID .* is running\n";
    const std::string hasClassPath = "grep -q jars/service.jar new/place/options";
    const std::string hasPaths = "grep jars/service.jar work/options && grep notes work/options";
    const std::string obeys = "target 'rm $pidfile; : >obeyed; exit'", ignores = "target ''";
    const std::string service = "start --jvmopt -XX:-UsePerfData --jvmopt -Xss16m --jvmopt ";
    const std::string waiting = service + "-Dstart=ready,wait --jvmopt -Dstop=report,release";
    const std::string report = service + "-Dstart=report";
    // clang-format off
    std::vector<Scenario> list{
        {"help", "launcher help", 0, "Usage:\n[\\s\\S]*"},
        {"version", "launcher help --version", 0, "Version .*\n"},
        {"stop", "stop --pidfile $pidfile", 0, stopped, "ls obeyed", obeys},
        {"stop-pid", "stop --fast --timeout 9000 --cstd out.txt --pid $target", 0, stopped,
         "ls obeyed", obeys},
        {"stop-old", old + "stop --pidfile $pidfile", 0, stopped, "ls obeyed", obeys},
        {"kill", "stop --timeout 200 --pid $target", 0, killed, "true", ignores},
        {"kill-old", old + "stop --timeout 200 --pidfile $pidfile", 0, killed, "true", ignores},
        {"start", "start_fake", 4, noJvm, hasClassPath},
        {"start-daemon", "start_fake --daemon", 4, noJvm, hasClassPath},
        {"start-owned", "start_fake", 3, owned, "true", ignores},
        {"start-installed", "start_installed", 4, noJvm, hasPaths, "", false, FAKE_JVM,
         LAUNCHER_WITH_LOCAL_INI},
    };
    // clang-format on
    for (const auto& [version, jvm] : installedJdks()) {
        const std::string name = "jvm" + std::to_string(version), served = "ls ready stop.report";
        list.push_back({name, waiting, 0, "", served, "", true, jvm});
        list.push_back({name + "-daemon", waiting + " --daemon", 100, "", served, "", true, jvm});
        list.push_back({name + "-return", report, 0, "", "ls start.report", "", false, jvm});
        if (!all) break;
    }
    return list;
}
