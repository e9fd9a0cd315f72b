// YamlNode: a line of launcher.yml, or a comment, with the lines that are
// indented below it. parseYaml() makes it and owns it together with all others;
// it points into the text that it was read from, which must outlive it.
#pragma once

#include <string_view>

class YamlNode final {
public:
    enum class Kind { KeyValue = 0, SequenceItem = 1, Comment = 2 };

    explicit YamlNode(Kind kind) : kind_(kind) {}
    YamlNode(const YamlNode&) = delete;
    YamlNode& operator=(const YamlNode&) = delete;

    [[nodiscard]] Kind kind() const { return kind_; }
    /// Null behind the last sibling.
    [[nodiscard]] const YamlNode* next() const { return next_; }
    [[nodiscard]] const YamlNode* firstChild() const { return firstChild_; }
    /// Empty when the node has none.
    [[nodiscard]] std::string_view key() const { return key_; }
    /// Without the blanks, tabs and line breaks at its ends.
    [[nodiscard]] std::string_view value() const;

    // For the reader that builds the tree.
    [[nodiscard]] YamlNode* lastChild() { return lastChild_; }
    void setKey(std::string_view key) { key_ = key; }
    void setValue(std::string_view value) { value_ = value; }
    /// Behind the children that are there. `child` has neither parent nor
    /// siblings yet.
    void append(YamlNode* child);

private:
    std::string_view key_;
    std::string_view value_;
    Kind kind_;
    YamlNode* next_ = nullptr;
    YamlNode* firstChild_ = nullptr;
    YamlNode* lastChild_ = nullptr;
};
