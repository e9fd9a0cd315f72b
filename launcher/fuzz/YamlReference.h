// YamlReference: reads launcher.yml as YamlReader does, for the two to be
// compared. Slow and simple: the rules of the format one after the other, over
// plain offsets and a list of nodes. Shares no code with the reader.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "LauncherException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"

/// A node as a line of text. The lengths tell two texts apart for certain.
inline std::string renderYamlNode(std::size_t depth, int kind, std::string_view key,
                                  std::string_view value)
{
    std::string line = std::to_string(depth) + " " + std::to_string(kind);
    for (const std::string_view text : {key, value}) {
        line.append(" ").append(std::to_string(text.size())).append(":").append(text);
    }
    return line + "\n";
}

class YamlReference final {
public:
    /// The text ends at its first NUL.
    explicit YamlReference(std::string_view text) : text_(text.substr(0, text.find('\0'))) {}

    /// The tree, a node on each line. Throws LauncherException. To be called once.
    [[nodiscard]] std::string read()
    {
        while (at(pos_) != '\0') readLine();
        std::string tree;
        // Every node was made behind those that stand before it in the file.
        for (std::size_t i = 1; i < nodes_.size(); ++i) {
            Node& node = nodes_[i];
            node.depth = node.parent == kRoot ? 0 : nodes_[node.parent].depth + 1;
            tree += renderYamlNode(node.depth, node.kind, node.key, trimmed(node.value));
        }
        return tree;
    }

private:
    static constexpr std::size_t kRoot = 0, kNone = 0;
    enum Kind { KeyValue = 0, SequenceItem = 1, Comment = 2 };

    struct Node {
        Kind kind = KeyValue;
        std::string_view key;
        std::string_view value;
        std::size_t parent = kNone;
        std::size_t lastChild = kNone;
        std::size_t depth = 0;
    };

    // What stands at an offset. Behind the text there are only NULs.
    [[nodiscard]] char at(std::size_t p) const { return p < text_.size() ? text_[p] : '\0'; }
    [[nodiscard]] bool isBreak(std::size_t p) const { return at(p) == '\r' || at(p) == '\n'; }
    [[nodiscard]] bool isPair(std::size_t p) const { return isBreak(p) && isBreak(p + 1); }
    [[nodiscard]] bool isValue(std::size_t p) const
    {
        return at(p) != '\0' && !isBreak(p) && at(p) != '#';
    }
    [[nodiscard]] bool isSeparator(std::size_t p) const
    {
        return (at(p) == ' ' || isBreak(p)) && p > 0 && at(p - 1) == ':';
    }
    [[nodiscard]] bool isKey(std::size_t p) const { return isValue(p) && !isSeparator(p); }
    [[nodiscard]] bool startsWith(std::string_view mark) const
    {
        return text_.substr(pos_).starts_with(mark);
    }
    [[nodiscard]] std::string_view from(std::size_t start, std::size_t end) const
    {
        return text_.substr(start, end - start);
    }
    static std::string_view trimmed(std::string_view text)
    {
        constexpr std::string_view kBlanks = " \t\r\n";
        while (!text.empty() && kBlanks.find(text.front()) != kBlanks.npos) text.remove_prefix(1);
        while (!text.empty() && kBlanks.find(text.back()) != kBlanks.npos) text.remove_suffix(1);
        return text;
    }

    [[noreturn]] void fail(const char* id) const
    {
        throw LauncherException(formatMessage(id, static_cast<int>(pos_)));
    }

    std::size_t add(Kind kind)
    {
        nodes_.push_back({});
        nodes_.back().kind = kind;
        return nodes_.size() - 1;
    }
    void append(std::size_t child, std::size_t parent)
    {
        nodes_[child].parent = parent;
        nodes_[parent].lastChild = child;
    }

    void readLine()
    {
        current_ = kNone;
        std::size_t indent = 0;
        do {
            if (isPair(pos_)) {
                pos_ += 2;
                indent = 0;
            }
            for (; at(pos_) == ' '; ++pos_) ++indent;
        } while (isPair(pos_));
        if (at(pos_) == '\0') return;
        if (at(pos_) == '-') {
            readItem();
        } else {
            readKeyLine();
        }
        readLineEnd();
        place(indent);
    }

    void readItem()
    {
        if (startsWith("---")) fail(IDS_YAML_MULTIPLE_DOCS);
        if (at(pos_ + 1) != ' ') fail(IDS_YAML_WRONG_STRUCTURE);
        ++pos_;
        current_ = add(SequenceItem);
        std::size_t valueStart = pos_;
        ++pos_;
        while (isKey(pos_)) ++pos_;
        if (isSeparator(pos_)) {
            nodes_[current_].key = from(valueStart, pos_ - 1);
            valueStart = pos_;
            ++pos_;
            while (isValue(pos_)) ++pos_;
        }
        nodes_[current_].value = from(valueStart, pos_);
    }

    void readKeyLine()
    {
        if (startsWith("...")) fail(IDS_YAML_MULTIPLE_DOCS);
        if (at(pos_) == '#') return;
        current_ = add(KeyValue);
        const std::size_t keyStart = pos_;
        ++pos_;
        while (isKey(pos_)) ++pos_;
        if (!isSeparator(pos_)) fail(IDS_YAML_KEY_EXPECTED);
        nodes_[current_].key = from(keyStart, pos_ - 1);
        if (at(pos_) != ' ') return;
        ++pos_;
        while (at(pos_) == ' ' || at(pos_) == '\t') ++pos_;
        const std::size_t valueStart = pos_;
        if (at(pos_) != '\0') ++pos_;  // whatever it is, also a line break
        while (isValue(pos_)) ++pos_;
        nodes_[current_].value = from(valueStart, pos_);
    }

    void readLineEnd()
    {
        if (isPair(pos_)) ++pos_;
        const char end = at(pos_);
        if (end == '\0') return;
        ++pos_;
        if (end != '#') return;
        const std::size_t comment = add(Comment);
        const std::size_t valueStart = pos_;
        while (at(pos_) != '\0' && !isBreak(pos_)) ++pos_;
        nodes_[comment].value = from(valueStart, pos_);
        if (current_ == kNone) {
            current_ = comment;
        } else {
            append(comment, current_);
        }
        if (at(pos_) != '\0') ++pos_;
    }

    void place(std::size_t indent)
    {
        if (indent > indents_.back()) {
            parent_ = nodes_[parent_].lastChild;
            if (parent_ == kNone) fail(IDS_YAML_WRONG_STRUCTURE);
            indents_.push_back(indent);
        }
        while (indents_.back() > indent) {
            parent_ = nodes_[parent_].parent;
            indents_.pop_back();
        }
        if (indents_.back() != indent) fail(IDS_YAML_WRONG_INDENT);
        append(current_, parent_);
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    std::vector<Node> nodes_{Node{}};  ///< the root, then the nodes as they come
    std::vector<std::size_t> indents_{0};
    std::size_t parent_ = kRoot;
    std::size_t current_ = kNone;
};
