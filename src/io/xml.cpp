#include "io/xml.h"

#include <cctype>

#include "base/text.h"

namespace ravelo {
namespace {

constexpr int kMaxXmlDepth = 200;

bool same_name(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

bool is_name_char(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' || c == ':' ||
           (static_cast<unsigned char>(c) & 0x80);
}

class XmlReader {
public:
    XmlReader(std::string_view text, const ReadPlace& place) : text_(text), place_(place) {}

    XmlElement document() {
        skip_misc();
        if (at_end() || text_[pos_] != '<') fail_here("the file is not an XML document");
        XmlElement root = element(0);
        skip_misc();
        if (!at_end()) fail_here("unexpected text after the document's root element");
        return root;
    }

private:
    bool at_end() const { return pos_ >= text_.size(); }
    [[noreturn]] void fail_here(const std::string& message) { read_failure(place_, line_, message); }

    void advance(size_t n) {
        for (size_t i = 0; i < n && pos_ < text_.size(); ++i) line_ += text_[pos_++] == '\n';
    }
    bool starts(std::string_view s) const { return text_.substr(pos_, s.size()) == s; }
    void skip_to(std::string_view end, const char* what) {
        size_t at = text_.find(end, pos_);
        if (at == std::string_view::npos) fail_here(format("%s is never closed", what));
        advance(at + end.size() - pos_);
    }
    void skip_space() {
        while (!at_end() && std::isspace(static_cast<unsigned char>(text_[pos_]))) advance(1);
    }
    // Whitespace, comments, declarations and processing instructions.
    void skip_misc() {
        while (true) {
            skip_space();
            if (starts("<?")) skip_to("?>", "processing instruction");
            else if (starts("<!--")) skip_to("-->", "comment");
            else if (starts("<!")) skip_declaration();
            else return;
        }
    }

    // A document type declaration may carry an internal subset in brackets, whose own
    // declarations and quoted texts contain '>'.
    void skip_declaration() {
        int depth = 0;
        char quote = 0;
        advance(2);
        while (!at_end()) {
            if (!quote && starts("<!--")) {
                skip_to("-->", "comment");
                continue;
            }
            char c = text_[pos_];
            advance(1);
            if (quote) {
                if (c == quote) quote = 0;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '[') {
                ++depth;
            } else if (c == ']') {
                if (depth > 0) --depth;
            } else if (c == '>' && depth == 0) {
                return;
            }
        }
        fail_here("declaration is never closed");
    }

    std::string name() {
        size_t start = pos_;
        while (!at_end() && is_name_char(text_[pos_])) advance(1);
        if (start == pos_) fail_here("missing name in XML tag");
        return std::string(text_.substr(start, pos_ - start));
    }

    std::string decoded(std::string_view raw) {
        std::string out;
        for (size_t i = 0; i < raw.size(); ++i) {
            if (raw[i] != '&') {
                out.push_back(raw[i]);
                continue;
            }
            size_t semi = raw.find(';', i);
            if (semi == std::string_view::npos || semi - i > 10) fail_here("unterminated character reference");
            std::string_view ref = raw.substr(i + 1, semi - i - 1);
            if (ref == "lt") out += '<';
            else if (ref == "gt") out += '>';
            else if (ref == "amp") out += '&';
            else if (ref == "quot") out += '"';
            else if (ref == "apos") out += '\'';
            else if (!ref.empty() && ref[0] == '#') {
                bool hex = ref.size() > 1 && (ref[1] == 'x' || ref[1] == 'X');
                unsigned long code = 0;
                for (char c : ref.substr(hex ? 2 : 1)) {
                    int d = std::isdigit(static_cast<unsigned char>(c)) ? c - '0'
                            : hex && std::isxdigit(static_cast<unsigned char>(c))
                                ? std::tolower(static_cast<unsigned char>(c)) - 'a' + 10
                                : -1;
                    if (d < 0) fail_here(format("bad character reference '&%.10s;'", std::string(ref).c_str()));
                    code = code * (hex ? 16 : 10) + static_cast<unsigned long>(d);
                    if (code > 0x10FFFF) fail_here("character reference out of range");
                }
                append_utf8(out, code);
            } else {
                fail_here(format("unknown entity '&%s;'", std::string(ref).c_str()));
            }
            i = semi;
        }
        return out;
    }

    static void append_utf8(std::string& out, unsigned long c) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }

    XmlElement element(int depth) {
        if (depth > kMaxXmlDepth) fail_here(format("XML elements nested more than %d deep", kMaxXmlDepth));
        XmlElement e;
        e.line = line_;
        advance(1);  // '<'
        e.name = name();
        while (true) {
            skip_space();
            if (at_end()) fail_here(format("tag <%s> is never closed", e.name.c_str()));
            if (starts("/>")) {
                advance(2);
                return e;
            }
            if (text_[pos_] == '>') {
                advance(1);
                break;
            }
            std::string key = name();
            skip_space();
            if (at_end() || text_[pos_] != '=') fail_here(format("missing '=' after attribute '%s'", key.c_str()));
            advance(1);
            skip_space();
            if (at_end() || (text_[pos_] != '"' && text_[pos_] != '\''))
                fail_here(format("missing quote for attribute '%s'", key.c_str()));
            char quote = text_[pos_];
            size_t end = text_.find(quote, pos_ + 1);
            if (end == std::string_view::npos) fail_here(format("attribute '%s' is never closed", key.c_str()));
            std::string value = decoded(text_.substr(pos_ + 1, end - pos_ - 1));
            advance(end + 1 - pos_);
            e.attributes.emplace_back(std::move(key), std::move(value));
        }
        content(e, depth);
        return e;
    }

    void content(XmlElement& e, int depth) {
        while (true) {
            if (at_end()) read_failure(place_, e.line, format("element <%s> is never closed", e.name.c_str()));
            if (starts("</")) {
                advance(2);
                std::string closing = name();
                if (closing != e.name)
                    fail_here(format("</%s> closes <%s> (opened at line %d)", closing.c_str(), e.name.c_str(), e.line));
                skip_space();
                if (at_end() || text_[pos_] != '>') fail_here(format("missing '>' after </%s", closing.c_str()));
                advance(1);
                return;
            }
            if (starts("<!--")) {
                skip_to("-->", "comment");
            } else if (starts("<![CDATA[")) {
                size_t start = pos_ + 9;
                skip_to("]]>", "CDATA section");
                e.text.append(text_.substr(start, pos_ - 3 - start));
            } else if (starts("<?")) {
                skip_to("?>", "processing instruction");
            } else if (text_[pos_] == '<') {
                e.children.push_back(element(depth + 1));
            } else {
                size_t end = text_.find('<', pos_);
                if (end == std::string_view::npos) end = text_.size();
                e.text += decoded(text_.substr(pos_, end - pos_));
                advance(end - pos_);
            }
        }
    }

    std::string_view text_;
    const ReadPlace& place_;
    size_t pos_ = 0;
    int line_ = 1;
};

}  // namespace

const std::string* XmlElement::attribute(std::string_view key) const {
    for (const auto& [k, v] : attributes)
        if (same_name(k, key)) return &v;
    return nullptr;
}

const XmlElement* XmlElement::child(std::string_view child_name) const {
    for (const XmlElement& c : children)
        if (c.is(child_name)) return &c;
    return nullptr;
}

std::vector<const XmlElement*> XmlElement::all(std::string_view child_name) const {
    std::vector<const XmlElement*> out;
    for (const XmlElement& c : children)
        if (c.is(child_name)) out.push_back(&c);
    return out;
}

bool XmlElement::is(std::string_view other) const { return same_name(name, other); }

XmlElement read_xml(std::string_view text, const ReadPlace& place) {
    return XmlReader(text, place).document();
}

std::string xml_escaped(std::string_view text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '&': out += "&amp;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

std::vector<std::string> words_of(std::string_view text) {
    std::vector<std::string> out;
    size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
        size_t start = i;
        while (i < text.size() && !std::isspace(static_cast<unsigned char>(text[i]))) ++i;
        if (i > start) out.emplace_back(text.substr(start, i - start));
    }
    return out;
}

}  // namespace ravelo
