// launcher.yml: its reader and its interpreter.
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "LauncherConfig.h"
#include "LauncherException.h"
#include "TextConversion.h"
#include "YamlReader.h"

namespace {

/// That the reader skips nothing else on its way from `from` to `to`.
void checkSkipped(const char* from, const char* to)
{
    check(from <= to, "keys and values stand in the order of the file");
    const std::string_view skipped(from, static_cast<std::size_t>(to - from));
    check(skipped.find_first_not_of(" \t\r\n-:#") == skipped.npos, "no text is lost");
}

/// In a loop: a node may lie as deep as the text is long.
void checkTree(const YamlNode* node, std::string_view text)
{
    const char* read = text.data();
    std::vector<const YamlNode*> later;  // what follows on each level above
    while (node) {
        for (const std::string_view part : {node->key(), node->value()}) {
            if (part.empty()) continue;
            checkSkipped(read, part.data());
            read = part.data() + part.size();
        }
        check(node->kind() != YamlNode::Kind::Comment || node->key().empty(), "comments have none");
        if (node->firstChild()) {
            later.push_back(node->next());
            node = node->firstChild();
            continue;
        }
        node = node->next();
        for (; !node && !later.empty(); later.pop_back()) node = later.back();
    }
    checkSkipped(read, text.data() + text.size());
}

/// Gives the message (UTF-8) of an error; empty without one.
std::string checkReader(std::string_view text)
{
    try {
        checkTree(parseYaml(text).get(), text.substr(0, text.find('\0')));
        return {};
    } catch (const LauncherException& e) {
        check(e.exitCode() == exit_code::kConfiguration && !e.message().empty(), "the error");
        return toUtf8(e.message());
    }
}

void checkConfig(const LauncherConfig& config)
{
    config.logState();
    check(config.isFileRead() != config.hasError(), "the file was read or there is an error");
    const auto code = config.getErrorCode();
    const auto version = config.getMinimalJavaVersion();
    if (config.hasError()) {
        check(code == exit_code::kConfiguration || code == exit_code::kOperatingSystem, "its code");
        check(version == 8, "a file with errors asks for no Java version");
    }
    check(version >= 8 && version <= 65535, "the Java version is in its limits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = asText(data, size);
    const std::string error = checkReader(text);
    const std::wstring directory = inputFile("launcher.yml", text);
    const LauncherConfig config = LauncherConfig::readFrom(directory, L"");
    checkConfig(config);
    if (!error.empty()) {
        check(toUtf8(config.getErrorMessage()) == error, "what the reader says is told");
    }
    if (text.find("${instance.root}") != text.npos) {
        checkConfig(LauncherConfig::readFrom(directory, L"/srv/instance"));
    }
    return 0;
}
