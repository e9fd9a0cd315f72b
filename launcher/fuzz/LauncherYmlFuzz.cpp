// launcher.yml: its reader, against the reference, and its interpreter.
#include <memory>
#include <vector>

#include "FuzzSupport.h"
#include "LauncherConfig.h"
#include "TextConversion.h"
#include "YamlNode.h"
#include "YamlReader.h"
#include "YamlReference.h"

namespace {

/// In a loop: a node may lie as deep as the text is long.
std::string renderTree(const YamlNode* node)
{
    std::string tree;
    std::vector<const YamlNode*> later;  // what follows on each level above
    while (node) {
        tree +=
            std::to_string(later.size()) + renderYamlNode(node->kind(), node->key(), node->value());
        if (node->firstChild()) {
            later.push_back(node->next());
            node = node->firstChild();
            continue;
        }
        node = node->next();
        for (; !node && !later.empty(); later.pop_back()) node = later.back();
    }
    return tree;
}

/// A tree, or the message (UTF-8) of what was thrown.
struct Outcome {
    bool isError;
    std::string text;
    bool operator==(const Outcome&) const = default;
};

template <typename Read>
Outcome outcomeOf(const Read& read)
{
    try {
        return {false, read()};
    } catch (const LauncherException& e) {
        return {true, toUtf8(e.message())};
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
    const Outcome expected = outcomeOf([text] { return YamlReference(text).read(); });
    const Outcome actual = outcomeOf([text] { return renderTree(parseYaml(text).get()); });
    if (actual != expected) {
        std::fprintf(stderr, "--- expected\n%s\n--- read\n%s\n", expected.text.c_str(),
                     actual.text.c_str());
        check(false, "the reader does as the reference");
    }

    const std::wstring directory = inputFile("launcher.yml", text);
    const LauncherConfig config = LauncherConfig::readFrom(directory, L"");
    checkConfig(config);
    if (expected.isError) {
        check(toUtf8(config.getErrorMessage()) == expected.text, "what the reader says is told");
    }
    if (text.find("${instance.root}") != text.npos) {
        checkConfig(LauncherConfig::readFrom(directory, L"/srv/instance"));
    }
    return 0;
}
