// YamlTree: owns the nodes of a launcher.yml, in blocks of memory: there may be
// millions.
#pragma once

#include <deque>

#include "YamlNode.h"

class YamlTree final {
public:
    /// The first top-level node, the others being its siblings; null when there
    /// are none.
    [[nodiscard]] const YamlNode* first() const
    {
        return nodes_.empty() ? nullptr : &nodes_.front();
    }

    /// A node that stands behind those before in the file. Stays where it is,
    /// also when the tree moves.
    YamlNode& add(YamlNode::Kind kind) { return nodes_.emplace_back(kind); }

private:
    std::deque<YamlNode> nodes_;
};
