#include "YamlReader.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <vector>

#include "LauncherException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"

namespace {

bool isLineBreak(char byte)
{
    return byte == '\r' || byte == '\n';
}

/// True for most bytes, and for none that ends a key or a value.
bool isText(char byte)
{
    return static_cast<unsigned char>(byte) > '#';
}

bool isCommentByte(char byte)
{
    return isText(byte) || (byte != '\0' && !isLineBreak(byte));
}

bool isValueByte(char byte)
{
    return isText(byte) || (isCommentByte(byte) && byte != '#');
}

/// One pass over a text, up to a NUL, of which any number stand behind it.
class Reader final {
public:
    explicit Reader(std::string_view text) : text_(text) { levels_.push_back({0, &root_}); }

    std::shared_ptr<const YamlNode> read()
    {
        for (;;) {
            const std::size_t indent = skipBlankLinesAndIndentation();
            if (current() == '\0') break;
            YamlNode* const node = current() == '-' ? readSequenceItem() : readKeyLine();
            place(readLineEnd(node), indent);
        }
        if (nodes_->empty()) return nullptr;
        return {nodes_, &nodes_->front()};
    }

private:
    /// An indentation that is open, and the node whose children have it.
    struct Level {
        std::size_t indent;
        YamlNode* parent;
    };

    [[nodiscard]] char at(std::size_t position) const
    {
        return position < text_.size() ? text_[position] : '\0';
    }
    [[nodiscard]] char current() const { return at(position_); }
    [[nodiscard]] bool isAtMarker(std::string_view marker) const
    {
        return text_.substr(position_, marker.size()) == marker;
    }
    [[nodiscard]] bool isAtLineBreakPair() const
    {
        return isLineBreak(current()) && isLineBreak(at(position_ + 1));
    }
    /// Behind the colon of a key; a tab separates nothing.
    [[nodiscard]] bool isAtSeparator() const
    {
        return (current() == ' ' || isLineBreak(current())) && at(position_ - 1) == ':';
    }

    template <typename Predicate>
    void skipWhile(Predicate predicate)
    {
        const auto here = text_.begin() + static_cast<std::ptrdiff_t>(position_);
        const auto end = std::find_if_not(here, text_.end(), predicate);
        position_ += static_cast<std::size_t>(end - here);
    }
    void skipKey()
    {
        const auto isSolid = [](char byte) {
            return isText(byte) || (isValueByte(byte) && byte != ' ');
        };
        for (skipWhile(isSolid); current() == ' ' && !isAtSeparator(); skipWhile(isSolid)) {
            ++position_;
        }
    }
    void skipValue() { skipWhile(isValueByte); }
    [[nodiscard]] std::string_view from(std::size_t start) const
    {
        return text_.substr(start, position_ - start);
    }

    [[noreturn]] void raise(const char* id) const
    {
        throw LauncherException(exit_code::kConfiguration,
                                formatMessage(id, static_cast<int>(position_)));
    }

    /// Gives the indentation of the line that follows.
    std::size_t skipBlankLinesAndIndentation()
    {
        std::size_t indent = 0;
        do {
            if (isAtLineBreakPair()) {
                position_ += 2;
                indent = 0;
            }
            for (; current() == ' '; ++position_) ++indent;
        } while (isAtLineBreakPair());
        return indent;
    }

    YamlNode* readSequenceItem()
    {
        if (isAtMarker("---")) raise(IDS_YAML_MULTIPLE_DOCS);
        if (at(position_ + 1) != ' ') raise(IDS_YAML_WRONG_STRUCTURE);
        YamlNode& node = nodes_->emplace_back(YamlNode::Kind::SequenceItem);
        std::size_t start = ++position_;  // the blank, which is part of what follows
        ++position_;
        skipKey();
        if (isAtSeparator()) {
            node.setKey(text_.substr(start, position_ - 1 - start));
            start = position_++;  // also when it is a line break, which then begins the value
            skipValue();
        }
        node.setValue(from(start));
        return &node;
    }

    /// Null at a comment.
    YamlNode* readKeyLine()
    {
        if (isAtMarker("...")) raise(IDS_YAML_MULTIPLE_DOCS);
        if (current() == '#') return nullptr;
        YamlNode& node = nodes_->emplace_back(YamlNode::Kind::KeyValue);
        const std::size_t keyStart = position_++;  // whatever it is, a line break, too
        skipKey();
        if (!isAtSeparator()) raise(IDS_YAML_KEY_EXPECTED);
        node.setKey(text_.substr(keyStart, position_ - 1 - keyStart));
        if (current() != ' ') return &node;

        while (current() == ' ' || current() == '\t') ++position_;
        const std::size_t valueStart = position_;
        if (current() != '\0') ++position_;  // any first byte, a line break, too
        skipValue();
        node.setValue(from(valueStart));
        return &node;
    }

    /// Takes the line break and a comment before it. Gives `node`, or the
    /// comment when there is none.
    YamlNode* readLineEnd(YamlNode* node)
    {
        if (isAtLineBreakPair()) ++position_;
        if (current() == '\0') return node;
        if (text_[position_++] != '#') return node;

        YamlNode& comment = nodes_->emplace_back(YamlNode::Kind::Comment);
        const std::size_t start = position_;
        skipWhile(isCommentByte);
        comment.setValue(from(start));
        if (current() != '\0') ++position_;
        if (!node) return &comment;
        node->append(&comment);
        return node;
    }

    /// Deeper than before: below the last node. Less deep: where that
    /// indentation was opened.
    void place(YamlNode* node, std::size_t indent)
    {
        if (indent > levels_.back().indent) {
            YamlNode* const parent = levels_.back().parent->lastChild();
            if (!parent) raise(IDS_YAML_WRONG_STRUCTURE);
            levels_.push_back({indent, parent});
        }
        while (indent < levels_.back().indent) levels_.pop_back();
        if (indent != levels_.back().indent) raise(IDS_YAML_WRONG_INDENT);
        levels_.back().parent->append(node);
    }

    std::string_view text_;
    std::size_t position_ = 0;
    // In blocks of memory: there may be millions. None moves.
    std::shared_ptr<std::deque<YamlNode>> nodes_ = std::make_shared<std::deque<YamlNode>>();
    YamlNode root_{YamlNode::Kind::KeyValue};  ///< parent of the top level
    std::vector<Level> levels_;                ///< indentations grow upwards from 0
};

}  // namespace

std::shared_ptr<const YamlNode> parseYaml(std::string_view text)
{
    return Reader(text).read();
}
