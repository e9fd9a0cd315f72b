// YamlReader: reads launcher.yml, whose format looks like YAML and has rules of
// its own, by lines: `key: value`, `- value`, `- key: value` and `#` comments,
// nested by indentation with blanks. A value is raw text: there are no quotes,
// escapes, flow collections, anchors, tags or types.
#pragma once

#include <memory>
#include <string_view>

#include "YamlNode.h"

/// The first top-level node of `text`, the others being its siblings; null when
/// there are none. The pointer owns all of them; `text` ends at its first NUL
/// and must outlive them. Comments are nodes like any other and take part in the indentation. Takes
/// time and memory in proportion to the text, and no stack that grows with it.
///
/// Odd on purpose, since files in use rely on it:
/// - The line break behind `key: ` or `- key:` begins the value. Where it is LF
///   alone, the value is therefore the next line.
/// - Line breaks count in pairs, whether of CRLF or of two lines: in an LF file
///   an odd number of blank lines is skipped, of an even number one LF is left
///   as the first byte of the next key. So is the LF behind a comment that ends
///   in CRLF.
/// - A line of blanks is no blank line.
///
/// Throws LauncherException (code 2) with the offset in bytes:
/// IDS_YAML_MULTIPLE_DOCS, IDS_YAML_WRONG_STRUCTURE, IDS_YAML_KEY_EXPECTED,
/// IDS_YAML_WRONG_INDENT.
[[nodiscard]] std::shared_ptr<const YamlNode> parseYaml(std::string_view text);
