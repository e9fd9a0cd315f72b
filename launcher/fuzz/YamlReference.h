// YamlReference: reads launcher.yml as YamlReader does, for the two to be
// compared. Slow and simple: the rules of the format one after the other, over
// plain offsets, and no tree, but its lines. Shares no code with the reader.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "LauncherException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextTrim.h"
#include "YamlNode.h"

/// A node as a line of text, but for its depth. No value holds a line break.
inline std::string renderYamlNode(YamlNode::Kind kind, std::string_view key, std::string_view value)
{
    return " " + std::to_string(static_cast<int>(kind)) + " " + std::to_string(key.size()) + ":" +
           std::string(key).append(":").append(value) + "\n";
}

class YamlReference final {
public:
    /// The text ends at its first NUL.
    explicit YamlReference(std::string_view text) : text_(text.substr(0, text.find('\0'))) {}

    /// The tree, a node on each line. Throws LauncherException. To be called once.
    [[nodiscard]] std::string read()
    {
        while (at(pos_) != '\0') readLine();
        return tree_;
    }

private:
    using Kind = YamlNode::Kind;

    // What stands at an offset. Behind the text there are only NULs.
    [[nodiscard]] char at(std::size_t p) const { return p < text_.size() ? text_[p] : '\0'; }
    [[nodiscard]] bool isBreak(std::size_t p) const { return at(p) == '\r' || at(p) == '\n'; }
    [[nodiscard]] bool isPair(std::size_t p) const { return isBreak(p) && isBreak(p + 1); }
    [[nodiscard]] bool isInLine(std::size_t p) const { return at(p) != '\0' && !isBreak(p); }
    [[nodiscard]] bool isValue(std::size_t p) const { return isInLine(p) && at(p) != '#'; }
    [[nodiscard]] bool isSeparator(std::size_t p) const
    {
        return (at(p) == ' ' || isBreak(p)) && p > 0 && at(p - 1) == ':';
    }
    [[nodiscard]] std::string_view valueFrom(std::size_t start) const
    {
        return trim(text_.substr(start, pos_ - start), " \t\r\n");
    }

    [[noreturn]] void fail(const char* id) const
    {
        throw LauncherException(formatMessage(id, static_cast<int>(pos_)));
    }

    void readLine()
    {
        std::size_t indent = 0;
        do {
            if (isPair(pos_)) {
                pos_ += 2;
                indent = 0;
            }
            for (; at(pos_) == ' '; ++pos_) ++indent;
        } while (isPair(pos_));
        if (at(pos_) == '\0') return;
        std::vector<std::string> nodes;
        if (at(pos_) != '#') nodes.push_back(readNode());
        if (isPair(pos_)) ++pos_;
        if (at(pos_) == '#') {
            const std::size_t start = ++pos_;
            while (isInLine(pos_)) ++pos_;
            nodes.push_back(renderYamlNode(Kind::Comment, {}, valueFrom(start)));
        }
        if (at(pos_) != '\0') ++pos_;
        std::size_t depth = depthOf(indent);
        // A comment stands below what is there before it.
        for (const std::string& node : nodes) tree_ += std::to_string(depth++) + node;
    }

    std::string readNode()
    {
        const bool isItem = at(pos_) == '-';
        const Kind kind = isItem ? Kind::SequenceItem : Kind::KeyValue;
        if (text_.substr(pos_).starts_with(isItem ? "---" : "...")) fail(IDS_YAML_MULTIPLE_DOCS);
        if (isItem && at(pos_ + 1) != ' ') fail(IDS_YAML_WRONG_STRUCTURE);
        if (isItem) ++pos_;
        std::size_t start = pos_++;
        while (isValue(pos_) && !isSeparator(pos_)) ++pos_;
        if (!isSeparator(pos_)) {
            if (!isItem) fail(IDS_YAML_KEY_EXPECTED);
            return renderYamlNode(kind, {}, valueFrom(start));
        }
        const std::string_view key = text_.substr(start, pos_ - 1 - start);
        if (!isItem) {
            if (isBreak(pos_)) return renderYamlNode(kind, key, {});
            while (at(pos_) == ' ' || at(pos_) == '\t') ++pos_;
        }
        start = pos_;
        if (at(pos_) != '\0') ++pos_;  // whatever it is, also a line break
        while (isValue(pos_)) ++pos_;
        return renderYamlNode(kind, key, valueFrom(start));
    }

    std::size_t depthOf(std::size_t indent)
    {
        if (indent > indents_.back()) {
            if (tree_.empty()) fail(IDS_YAML_WRONG_STRUCTURE);
            indents_.push_back(indent);
        }
        while (indents_.back() > indent) indents_.pop_back();
        if (indents_.back() != indent) fail(IDS_YAML_WRONG_INDENT);
        return indents_.size() - 1;
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    std::string tree_;
    std::vector<std::size_t> indents_{0};
};
