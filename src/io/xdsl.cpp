// The .xdsl format: <smile> with <nodes> (cpt, noisy-MAX, deterministic, decision
// and utility nodes) and the editor's <extensions> (titles, positions, comments).
#include "base/text.h"
#include "io/noisy_max.h"
#include "io/xml.h"
#include "io/xml_formats.h"

namespace ravelo {
namespace {

void read_states(const XmlElement& e, ForeignNode& node) {
    for (const XmlElement* s : e.all("state"))
        if (const std::string* id = s->attribute("id")) node.states.push_back(*id);
}

void read_parents(const XmlElement& e, ForeignNode& node) {
    if (const XmlElement* p = e.child("parents")) node.parents = words_of(p->text);
}

// A deterministic node's resulting state per condition, as a table of 0s and 1s.
void read_resulting_states(const XmlElement& e, ForeignNet& net, ForeignNode& node, const ReadPlace& place) {
    const XmlElement* r = e.child("resultingstates");
    if (!r) read_failure(place, e.line, format("deterministic node '%s' has no <resultingstates>", node.name.c_str()));
    size_t size = table_size(net, node, place);
    std::vector<std::string> results = words_of(r->text);
    size_t m = node.states.size();
    if (results.size() * m != size)
        read_failure(place, r->line, format("node '%s' has %zu resulting states, but there should be %zu",
                                            node.name.c_str(), results.size(), size / m));
    node.cpt.assign(size, 0.0f);
    for (size_t row = 0; row < results.size(); ++row) {
        size_t s = 0;
        while (s < m && node.states[s] != results[row]) ++s;
        if (s == m) read_failure(place, r->line, format("unknown state '%s'", results[row].c_str()));
        node.cpt[row * m + s] = 1.0f;
    }
}

void read_node(const XmlElement& e, ForeignNet& net, const ReadPlace& place) {
    ForeignNode node;
    node.line = e.line;
    const std::string* id = e.attribute("id");
    if (!id) read_failure(place, e.line, format("<%s> has no id", e.name.c_str()));
    node.name = *id;
    if (find_node(net, node.name) >= 0)
        read_failure(place, e.line, format("more than one %s with the name '%s'", "node", id->c_str()));
    read_states(e, node);
    read_parents(e, node);
    node.table_line = e.line;
    if (e.is("cpt")) {
        if (const XmlElement* p = e.child("probabilities")) {
            size_t size = table_size(net, node, place);
            std::vector<double> values = numbers_of(p->text, place, p->line);
            if (values.size() != size)
                read_failure(place, p->line, format("table of '%s' has %zu entries, but there should be %zu",
                                                    id->c_str(), values.size(), size));
            node.cpt.assign(values.begin(), values.end());
        }
    } else if (e.is("noisymax")) {
        read_noisy_max(e, net, node, place);
    } else if (e.is("deterministic")) {
        read_resulting_states(e, net, node, place);
    } else if (e.is("decision")) {
        node.kind = NodeKind::Decision;
    } else if (e.is("utility")) {
        node.kind = NodeKind::Utility;
        if (const XmlElement* u = e.child("utilities")) node.utilities = numbers_of(u->text, place, u->line);
    } else {
        read_failure(place, e.line, format("node '%s' is a <%s> node, which can't be read", id->c_str(), e.name.c_str()));
    }
    net.nodes.push_back(std::move(node));
}

// Titles, comments and positions kept by the editor.
void read_extensions(const XmlElement& smile, ForeignNet& net, const ReadPlace& place) {
    const XmlElement* ext = smile.child("extensions");
    const XmlElement* genie = ext ? ext->child("genie") : nullptr;
    if (!genie) return;
    if (const std::string* name = genie->attribute("name"); name && net.title.empty()) net.title = *name;
    for (const XmlElement* n : genie->all("node")) {
        const std::string* id = n->attribute("id");
        int index = id ? find_node(net, *id) : -1;
        if (index < 0) continue;
        ForeignNode& node = net.nodes[static_cast<size_t>(index)];
        if (const XmlElement* t = n->child("name")) node.title = t->text;
        if (const XmlElement* c = n->child("comment")) node.comment = c->text;
        if (const XmlElement* p = n->child("position")) {
            std::vector<double> box = numbers_of(p->text, place, p->line);
            if (box.size() == 4) {
                node.has_position = true;
                node.x = (box[0] + box[2]) / 2;
                node.y = (box[1] + box[3]) / 2;
            }
        }
    }
}

}  // namespace

ForeignNet read_xdsl(std::string_view text, const ReadPlace& place) {
    XmlElement smile = read_xml(text, place);
    if (!smile.is("smile")) read_failure(place, smile.line, format("root element is <%s>, not <smile>", smile.name.c_str()));
    ForeignNet net;
    if (const std::string* id = smile.attribute("id")) net.name = *id;
    const XmlElement* nodes = smile.child("nodes");
    if (!nodes) read_failure(place, smile.line, "<smile> has no <nodes>");
    for (const XmlElement& e : nodes->children) read_node(e, net, place);
    read_extensions(smile, net, place);
    return net;
}

}  // namespace ravelo
