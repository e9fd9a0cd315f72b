#include "LauncherConfig.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "FileContent.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"
#include "VariableExpansion.h"
#include "YamlReader.h"

namespace {

using Kind = YamlNode::Kind;

constexpr wchar_t kClass[] = L"LauncherConfig";
constexpr wchar_t kLogState[] = L"logState";

constexpr char kWorkDir[] = "work-dir";
constexpr char kServiceName[] = "service-name";
constexpr char kJavaHome[] = "java-home";
constexpr char kPidFile[] = "pid-file";
constexpr char kLogFile[] = "log-file";
constexpr char kClassPath[] = "class-path";
constexpr char kModulePath[] = "module-path";
constexpr char kMainClass[] = "main-class";
constexpr char kDaemon[] = "daemon";  // kept, but nothing asks for it
constexpr char kQuiet[] = "quiet";

constexpr std::int32_t kOldestJava = 8;
constexpr std::int32_t kNewestJava = 65535;

/// True for a key with one value.
bool isScalar(std::string_view key)
{
    static constexpr std::string_view kScalars[] = {
        kWorkDir,   kServiceName, kJavaHome,  kPidFile, kLogFile,
        kClassPath, kModulePath,  kMainClass, kDaemon,  kQuiet,
    };
    return std::find(std::begin(kScalars), std::end(kScalars), key) != std::end(kScalars);
}

[[noreturn]] void raise(const std::wstring& message)
{
    throw LauncherException(exit_code::kConfiguration, message);
}

[[noreturn]] void raiseUnknownField(const ExpansionContext& context, const std::wstring& field)
{
    raise(formatMessage(IDS_FILE_FORMAT_UNKNOWN_FIELD, context.fileName, field));
}

[[noreturn]] void raiseWrongStructure(const ExpansionContext& context)
{
    raise(formatMessage(IDS_FILE_FORMAT_WRONG_STRUCTURE, context.fileName));
}

std::wstring keyOf(const YamlNode& node)
{
    return toWide(node.key());
}

std::wstring rawValueOf(const YamlNode& node)
{
    return toWide(node.value());
}

std::wstring valueOf(const YamlNode& node, const ExpansionContext& context)
{
    return expandVariables(context, rawValueOf(node));
}

/// Items of a list from `entry` on.
std::size_t countItems(const YamlNode* entry)
{
    std::size_t count = 0;
    for (; entry && entry->kind() == Kind::SequenceItem; entry = entry->next()) ++count;
    return count;
}

/// Appends the items of a list, which stand behind its key at the key's own
/// indentation, to `items`. Gives the entry to go on with. Behind an empty list
/// the next entry is skipped unread; required.
const YamlNode* readList(const YamlNode& key, const ExpansionContext& context,
                         std::vector<std::wstring>& items)
{
    const YamlNode* entry = key.next();
    if (entry && entry->kind() == Kind::KeyValue) return entry->next();
    if (items.empty()) items.reserve(countItems(entry));
    for (; entry && entry->kind() != Kind::KeyValue; entry = entry->next()) {
        if (entry->kind() == Kind::Comment) raiseWrongStructure(context);
        items.push_back(valueOf(*entry, context));
    }
    return entry;
}

}  // namespace

LauncherConfig::LauncherConfig(std::wstring fileName) : fileName_(std::move(fileName)) {}

LauncherConfig LauncherConfig::read(const std::wstring& instanceRoot, bool readFile)
{
    if (!readFile) return LauncherConfig({});
    return readFrom(getOsUtilsFactory().getProcessUtils().getExecutableDirectory(), instanceRoot);
}

LauncherConfig LauncherConfig::readFrom(const std::wstring& directory,
                                        const std::wstring& instanceRoot)
{
    const std::wstring fileName = directory + L"/launcher.yml";
    try {
        LauncherConfig config(fileName);
        if (getOsUtilsFactory().getFileUtils().fileExists(fileName)) {
            config.load(directory, instanceRoot);
        }
        return config;
    } catch (const LauncherException& e) {
        LauncherConfig failed(fileName);
        failed.errorMessage_ = e.message();
        failed.errorCode_ = e.exitCode();
        return failed;
    }
}

std::wstring LauncherConfig::getWorkDir() const
{
    return getValue(kWorkDir);
}

std::wstring LauncherConfig::getServiceName() const
{
    return getValue(kServiceName);
}

std::wstring LauncherConfig::getJavaHome() const
{
    return getValue(kJavaHome);
}

std::wstring LauncherConfig::getPidFile() const
{
    return getValue(kPidFile);
}

std::wstring LauncherConfig::getLogFile() const
{
    return getValue(kLogFile);
}

std::wstring LauncherConfig::getClassPath() const
{
    return getValue(kClassPath);
}

std::wstring LauncherConfig::getModulePath() const
{
    return getValue(kModulePath);
}

std::wstring LauncherConfig::getMainClass() const
{
    return getValue(kMainClass);
}

bool LauncherConfig::isQuiet() const
{
    return getValue(kQuiet) == L"true";
}

void LauncherConfig::logState() const
{
    if (hasError()) {
        logError({kClass, kLogState}, L"Cannot read file", L"fileName", fileName_, L"errors",
                 errorMessage_);
        return;
    }
    if (!fileRead_) {
        logInfo({kClass, kLogState}, L"No launcher parameters file read.", L"fileName", fileName_);
        return;
    }
    logInfo({kClass, kLogState}, L"Launcher parameters file read:", L"fileName", fileName_,
            L"--workdir", getWorkDir(), L"--servicename", getServiceName(), L"--pidfile",
            getPidFile(), L"--clog", getLogFile(), L"--quiet", isQuiet());
    logInfo({kClass, kLogState}, L"Java parameters:", L"--javahome", getJavaHome(), L"--jclasspath",
            getClassPath(), L"--jmodulepath", getModulePath(), L"--jifaceclass", getMainClass(),
            L"minimalJavaVersion", minimalJavaVersion_);
    logInfo({kClass, kLogState}, L"JVM options:", L"options", jvmOptions_);
    logInfo({kClass, kLogState}, L"main class arguments:", L"options", mainClassArguments_);
}

void LauncherConfig::load(const std::wstring& directory, const std::wstring& instanceRoot)
{
    IOsUtilsFactory& os = getOsUtilsFactory();
    const std::shared_ptr<FileContent> content = os.getFileUtils().readFile(fileName_);
    const std::shared_ptr<const YamlNode> tree = parseYaml(content->view());
    const ExpansionContext context{instanceRoot, directory, fileName_,
                                   os.getProcessUtils().getEnvironmentVariable(L"PATH")};
    interpret(tree.get(), context);
    fileRead_ = true;
}

void LauncherConfig::interpret(const YamlNode* top, const ExpansionContext& context)
{
    if (!top) raiseUnknownField(context, L"root");
    if (top->key() != "launcher-parameters") raiseUnknownField(context, keyOf(*top));
    // Its siblings, and what is indented below a value, are ignored unread; required.
    const YamlNode* entry = top->firstChild();
    while (entry) entry = interpretEntry(*entry, context);
}

const YamlNode* LauncherConfig::interpretEntry(const YamlNode& entry,
                                               const ExpansionContext& context)
{
    if (entry.kind() == Kind::Comment) return entry.next();
    if (entry.kind() == Kind::SequenceItem) raiseWrongStructure(context);
    const std::string_view key = entry.key();
    if (key == "jvm-opts") return readList(entry, context, jvmOptions_);
    if (key == "main-class-args") return readList(entry, context, mainClassArguments_);
    if (key == "banner") {
        readBanner(entry, context);
        return nullptr;  // the last entry that counts; required
    }
    if (key == "minimal-java-version") {
        readMinimalJavaVersion(entry, context);
    } else if (isScalar(key)) {
        values_[std::string(key)] = valueOf(entry, context);
    } else {
        raiseUnknownField(context, keyOf(entry));
    }
    return entry.next();
}

void LauncherConfig::readBanner(const YamlNode& entry, const ExpansionContext& context)
{
    for (const YamlNode* text = entry.firstChild(); text; text = text->next()) {
        if (text->kind() != Kind::KeyValue) raiseWrongStructure(context);
        banner_[keyOf(*text)] = valueOf(*text, context);
    }
}

void LauncherConfig::readMinimalJavaVersion(const YamlNode& entry, const ExpansionContext& context)
{
    const std::wstring text = rawValueOf(entry);  // no variables; "+17" and "017" are numbers, too
    std::size_t length = 0;
    int version = 0;
    try {
        version = std::stoi(text, &length);
    } catch (const std::logic_error&) {
        length = std::wstring::npos;  // no number, or none that fits
    }
    if (length != text.size() || version < kOldestJava || version > kNewestJava) {
        raise(formatMessage(IDS_FILE_FORMAT_UNKNOWN_JAVA_VERSION, context.fileName, text));
    }
    minimalJavaVersion_ = version;
}

std::wstring LauncherConfig::getValue(const char* key) const
{
    const auto found = values_.find(key);
    return found == values_.end() ? std::wstring() : found->second;
}
