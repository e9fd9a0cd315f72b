#include "YamlNode.h"

#include "TextTrim.h"

std::string_view YamlNode::value() const
{
    return trim(value_, " \t\r\n");
}

void YamlNode::append(YamlNode* child)
{
    (lastChild_ ? lastChild_->next_ : firstChild_) = child;
    lastChild_ = child;
}
