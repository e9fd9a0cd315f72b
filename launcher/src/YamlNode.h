// YamlNode: a line of launcher.yml, or a comment, with the lines that are
// indented below it. Owns its children and, through them, the whole tree
// below; points into the text that it was read from, which must outlive it.
#pragma once

#include <memory>
#include <string_view>

class YamlNode final {
public:
    enum class Kind { KeyValue = 0, SequenceItem = 1, Comment = 2 };

    explicit YamlNode(Kind kind) : kind_(kind) {}
    /// In constant stack space, however deep the tree and however long its
    /// chains are.
    ~YamlNode();
    YamlNode(const YamlNode&) = delete;
    YamlNode& operator=(const YamlNode&) = delete;

    [[nodiscard]] Kind kind() const { return kind_; }
    /// Null behind the last sibling.
    [[nodiscard]] const YamlNode* next() const { return next_.get(); }
    [[nodiscard]] const YamlNode* firstChild() const { return firstChild_.get(); }
    /// Empty when the node has none.
    [[nodiscard]] std::string_view key() const { return key_; }
    /// Without the blanks, tabs and line breaks at its ends.
    [[nodiscard]] std::string_view value() const;

    // For the reader that builds the tree.
    [[nodiscard]] YamlNode* lastChild() { return lastChild_; }
    void setKey(std::string_view key) { key_ = key; }
    void setValue(std::string_view value) { value_ = value; }
    /// Behind the children that are there. `child` is a single node.
    void append(std::unique_ptr<YamlNode> child);
    /// The chain of children, which the caller owns from now on.
    [[nodiscard]] std::unique_ptr<YamlNode> takeChildren();

private:
    std::string_view key_;
    std::string_view value_;
    Kind kind_;
    std::unique_ptr<YamlNode> next_;
    std::unique_ptr<YamlNode> firstChild_;
    YamlNode* lastChild_ = nullptr;  ///< in the chain of firstChild_
};
