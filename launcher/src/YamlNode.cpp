#include "YamlNode.h"

#include <utility>

#include "TextTrim.h"

YamlNode::~YamlNode()
{
    // What is still to be destroyed is one chain of siblings: the children of
    // each node go to its front, so every node dies without children.
    std::unique_ptr<YamlNode> rest = std::move(next_);
    const auto prependChildrenOf = [&rest](YamlNode& node) {
        if (!node.firstChild_) return;
        node.lastChild_->next_ = std::move(rest);
        rest = std::move(node.firstChild_);
    };
    prependChildrenOf(*this);
    while (rest) {
        const std::unique_ptr<YamlNode> node = std::move(rest);
        rest = std::move(node->next_);
        prependChildrenOf(*node);
    }
}

std::string_view YamlNode::value() const
{
    return trim(value_, " \t\r\n");
}

void YamlNode::append(std::unique_ptr<YamlNode> child)
{
    YamlNode* const added = child.get();
    (lastChild_ ? lastChild_->next_ : firstChild_) = std::move(child);
    lastChild_ = added;
}

std::unique_ptr<YamlNode> YamlNode::takeChildren()
{
    lastChild_ = nullptr;
    return std::move(firstChild_);
}
