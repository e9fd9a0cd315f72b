#include "Hosts.h"

#include <utility>

namespace {

constexpr char kServiceClass[] = "BenchService";
constexpr char kWaits[] = "-Dbench.waits=true";
/// What Debian's jsvc needs of Java.
constexpr char kJsvcJar[] = "/usr/share/java/commons-daemon.jar";

/// The options that are the same for all hosts.
Command jvmOptions(const Setting& setting, Service service)
{
    Command options;
    if (!setting.collector.empty()) options.push_back(setting.collector);
    if (service == Service::Waits) options.emplace_back(kWaits);
    return options;
}

void append(Command& command, const Command& words)
{
    command.insert(command.end(), words.begin(), words.end());
}

}  // namespace

std::string Setting::text() const
{
    return "JDK " + std::to_string(javaVersion) + (collector.empty() ? "" : ", serial");
}

std::string Setting::javaHome() const
{
    return std::filesystem::path(library).parent_path().parent_path().parent_path();
}

Hosts::Hosts(std::string launcher, std::string floor, std::string jar, std::string jsvc,
             std::filesystem::path memory, std::filesystem::path disk)
    : launcher_(std::move(launcher)),
      floor_(std::move(floor)),
      jar_(std::move(jar)),
      jsvc_(std::move(jsvc)),
      memory_(std::move(memory)),
      disk_(std::move(disk))
{
}

Command Hosts::launcherCommand(const Command& words) const
{
    Command command{launcher_};
    append(command, words);
    return command;
}

Command Hosts::launcher(const Setting& setting, Service service, Files files) const
{
    const std::filesystem::path& directory = files == Files::OnDisk ? disk_ : memory_;
    const std::string version = std::to_string(setting.javaVersion);
    Command command{launcher_,       "start",
                    "--jvmdll",      setting.library,
                    "--jclasspath",  jar_,
                    "--jifaceclass", service == Service::Map ? "BenchMapService" : kServiceClass,
                    "--pidfile",     directory / ("pid" + version)};
    if (files != Files::NoLog) append(command, {"--clog", directory / ("log" + version)});
    for (const std::string& option : jvmOptions(setting, service)) {
        append(command, {"--jvmopt", option});
    }
    return command;
}

Command Hosts::floor(const Setting& setting, Service service) const
{
    Command command{floor_, setting.library, kServiceClass, "-Djava.class.path=" + jar_};
    append(command, jvmOptions(setting, service));
    return command;
}

Command Hosts::java(const Setting& setting) const
{
    Command command{setting.javaHome() + "/bin/java", "-cp", jar_};
    append(command, jvmOptions(setting, Service::Returns));
    command.emplace_back(kServiceClass);
    return command;
}

Command Hosts::jsvc(const Setting& setting) const
{
    Command command{jsvc_,      "-nodetach",
                    "-home",    setting.javaHome(),
                    "-cp",      jar_ + ":" + kJsvcJar,
                    "-pidfile", memory_ / "jsvc.pid",
                    "-outfile", "&1",
                    "-errfile", "&2"};
    append(command, jvmOptions(setting, Service::Returns));
    command.emplace_back(kServiceClass);
    return command;
}

void Hosts::tidyUp() const
{
    for (const std::filesystem::path& directory : {memory_, disk_}) {
        for (const auto& entry : std::filesystem::directory_iterator(directory)) {
            if (entry.path() != errors()) std::filesystem::remove(entry.path());
        }
    }
}
