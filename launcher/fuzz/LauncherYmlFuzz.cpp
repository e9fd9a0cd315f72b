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
        tree += renderYamlNode(later.size(), static_cast<int>(node->kind()), node->key(),
                               node->value());
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

/// What `read` gives, and the message (UTF-8) of what it throws.
struct Outcome {
    template <typename Read>
    explicit Outcome(const Read& read)
    {
        try {
            tree = read();
        } catch (const LauncherException& e) {
            error = toUtf8(e.message());
        }
    }

    std::string tree;
    std::string error;
};

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
    static const InputFile file("launcher.yml");
    const std::string_view text = asText(data, size);
    const Outcome expected([text] { return YamlReference(text).read(); });
    const Outcome actual([text] { return renderTree(parseYaml(text).get()); });
    if (expected.tree != actual.tree || expected.error != actual.error) {
        std::fprintf(stderr, "--- expected\n%s%s\n--- read\n%s%s\n", expected.tree.c_str(),
                     expected.error.c_str(), actual.tree.c_str(), actual.error.c_str());
        check(false, "the reader does as the reference");
    }

    file.write(text);
    const LauncherConfig config = LauncherConfig::readFrom(file.directory(), L"");
    checkConfig(config);
    if (!expected.error.empty()) {
        check(toUtf8(config.getErrorMessage()) == expected.error, "what the reader says is told");
    }
    if (text.find("${instance.root}") != text.npos) {
        checkConfig(LauncherConfig::readFrom(file.directory(), L"/srv/instance"));
    }
    return 0;
}
