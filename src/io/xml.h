// A small reader of XML documents, enough for the XML net formats:
// elements, attributes, text, comments, processing instructions, CDATA and
// the predefined and numeric character references.
#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "io/read_place.h"

namespace ravelo {

struct XmlElement {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<XmlElement> children;
    std::string text;  // the element's own character data, joined
    int line = 0;

    const std::string* attribute(std::string_view key) const;
    // The first child with that name (case-insensitive), or NULL.
    const XmlElement* child(std::string_view child_name) const;
    std::vector<const XmlElement*> all(std::string_view child_name) const;
    bool is(std::string_view other) const;  // name comparison, case-insensitive
};

// The document's root element.
XmlElement read_xml(std::string_view text, const ReadPlace& place);

// Text with the characters XML reserves escaped.
std::string xml_escaped(std::string_view text);

// The whitespace-separated words of a text.
std::vector<std::string> words_of(std::string_view text);

}  // namespace ravelo
