#include "YamlReader.h"

#include <tuple>

#include "MessageIds.h"
#include "UnitTest.h"

namespace {

/// Siblings joined with '|', each as "key:value", "-key:value" or "#value",
/// with its children in parentheses.
std::string render(const YamlNode* node)
{
    std::string text;
    for (; node; node = node->next()) {
        if (!text.empty()) text += '|';
        if (node->kind() == YamlNode::Kind::SequenceItem) text += '-';
        text += node->key();
        text += node->kind() == YamlNode::Kind::Comment ? '#' : ':';
        text += node->value();
        if (node->firstChild()) text += '(' + render(node->firstChild()) + ')';
    }
    return text;
}

using YamlReaderTest = UnitTest;

TEST_F(YamlReaderTest, BuildsATreeOfKeysItemsAndComments)
{
    const std::pair<std::string_view, std::string> cases[] = {
        {"", ""},
        {"a: 1\n.b: 2", "a:1|.b:2"},
        {"a:\n\tb: 1\n  \n\nc: 2", "a:|\tb:1|c:2"},
        {"a:\n  b: 1\n    \n c: x", "a:(b:1(\n c:x))"},
        {"a:\n b:\n  c: 1\n d:\n\ne: 2\n", "a:(b:(c:1)|d:)|e:2"},
        {"x: a: b\ty \t\r\na b:c: \"q\"#d", "x:a: b\ty|a b:c:\"q\"(#d)"},
        {"a:\n  # 1\n  b: 1\n# 2", "a:(#1|b:1)|#2"},
        {"- item\n- k: v # c\n-  \n: x", "-:item|- k:v(#c)|-:|:x"},
        {{"a: 1\n\0b: 2", 10}, "a:1"},
    };
    for (const auto& [text, tree] : cases) EXPECT_EQ(render(parseYaml(text).get()), tree);
}

TEST_F(YamlReaderTest, KeepsItsOddRules)
{
    const std::pair<std::string_view, std::string> cases[] = {
        // A value of blanks, or an item's key without value, takes the next line.
        {"a: \t \nb: 2\nc: 3", "a:b: 2|c:3"},
        {"a: # 1\nb: ", "a:# 1|b:"},
        {"- a:\nb: 2\nc: 3", "- a:b: 2|c:3"},
        // The third line break in a row begins a key, and a line of blanks is a line.
        {"a: 1\n\nb: 2\n\n\nc: 3\n\n\n\nd: 4", "a:1|b:2|\nc:3|d:4"},
        {"a:\r\n\r\n\r\n  b: \r\nc: 2\r\rd: 3", "a:(b:)|c:2|d:3"},
        {"a: 1\r\n# 2 # 3\r\nb: 3", "a:1|#2 # 3|\nb:3"},
    };
    for (const auto& [text, tree] : cases) EXPECT_EQ(render(parseYaml(text).get()), tree);
}

TEST_F(YamlReaderTest, TellsWhatIsWrongAndWhere)
{
    const std::tuple<std::string_view, const char*, int> cases[] = {
        {"a: 1\n--- x", IDS_YAML_MULTIPLE_DOCS, 5},
        {"a:\n  ...", IDS_YAML_MULTIPLE_DOCS, 5},
        {"--x", IDS_YAML_WRONG_STRUCTURE, 0},
        {"a: 1\n-\n", IDS_YAML_WRONG_STRUCTURE, 5},
        {" a: 1\nb: 2", IDS_YAML_WRONG_STRUCTURE, 6},
        {"abc\n", IDS_YAML_KEY_EXPECTED, 3},
        {"a:\t", IDS_YAML_KEY_EXPECTED, 3},
        {"a#b: c", IDS_YAML_KEY_EXPECTED, 1},
        {"a:", IDS_YAML_KEY_EXPECTED, 2},
        {"a:\n  b: 1\n c: 2\nd: 3", IDS_YAML_WRONG_INDENT, 16},
    };
    for (const auto& [text, id, offset] : cases) {
        EXPECT_EQ(raised([&text = text] { return parseYaml(text); }),
                  L"2 " + formatMessage(id, offset))
            << text;
    }
}

TEST_F(YamlReaderTest, TakesNoStackForWhatAFileHolds)
{
    std::string text;
    for (std::size_t depth = 0; depth < 4000; ++depth) text += std::string(depth, ' ') + "a:\n";
    for (int i = 0; i < 500'000; ++i) text += "b:\n";
    const auto tree = parseYaml(text);
    int depth = 0;
    for (const YamlNode* node = tree.get(); node; node = node->firstChild()) ++depth;
    EXPECT_EQ(depth, 4000);
}

}  // namespace
