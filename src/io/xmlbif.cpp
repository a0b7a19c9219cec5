#include <cstdio>

#include "base/numbers.h"
#include "base/text.h"
#include "io/xml.h"
#include "io/xml_formats.h"

namespace ravelo {

std::vector<double> numbers_of(const std::string& text, const ReadPlace& place, int line) {
    std::vector<double> out;
    for (const std::string& w : words_of(text)) {
        auto x = read_real(w);
        if (!x) read_failure(place, line, format("'%s' is not a number", w.c_str()));
        out.push_back(*x);
    }
    return out;
}

namespace {

std::string trimmed(const std::string& s) {
    size_t a = s.find_first_not_of(" \t\r\n");
    if (a == std::string::npos) return {};
    return s.substr(a, s.find_last_not_of(" \t\r\n") - a + 1);
}

const XmlElement& required(const XmlElement& e, const char* name, const ReadPlace& place) {
    const XmlElement* c = e.child(name);
    if (!c) read_failure(place, e.line, format("<%s> has no <%s>", e.name.c_str(), name));
    return *c;
}

void read_variable(const XmlElement& v, ForeignNet& net, const ReadPlace& place) {
    ForeignNode node;
    node.line = v.line;
    node.name = trimmed(required(v, "NAME", place).text);
    const std::string* type = v.attribute("TYPE");
    if (type && *type == "decision") node.kind = NodeKind::Decision;
    if (type && *type == "utility") node.kind = NodeKind::Utility;
    for (const XmlElement* o : v.all("OUTCOME")) node.states.push_back(trimmed(o->text));
    if (node.states.empty() && node.kind != NodeKind::Utility)
        read_failure(place, v.line, format("variable '%s' has no <OUTCOME>", node.name.c_str()));
    for (const XmlElement* p : v.all("PROPERTY")) {
        std::string text = trimmed(p->text);
        double x = 0, y = 0;
        if (std::sscanf(text.c_str(), "position = ( %lf , %lf )", &x, &y) == 2) {
            node.has_position = true;
            node.x = x;
            node.y = y;
        } else if (!text.empty()) {
            size_t eq = text.find('=');
            if (eq == std::string::npos) node.fields.emplace_back("property", text);
            else node.fields.emplace_back(trimmed(text.substr(0, eq)), trimmed(text.substr(eq + 1)));
        }
    }
    if (find_node(net, node.name) >= 0)
        read_failure(place, v.line, format("more than one %s with the name '%s'", "variable", node.name.c_str()));
    net.nodes.push_back(std::move(node));
}

void read_definition(const XmlElement& d, ForeignNet& net, const ReadPlace& place) {
    std::string name = trimmed(required(d, "FOR", place).text);
    int index = find_node(net, name);
    if (index < 0) read_failure(place, d.line, format("undefined >-node '%s'", name.c_str()));
    ForeignNode& node = net.nodes[static_cast<size_t>(index)];
    if (!node.cpt.empty() || !node.utilities.empty() || !node.parents.empty())
        read_failure(place, d.line, format("more than one definition for '%s'", name.c_str()));
    for (const XmlElement* g : d.all("GIVEN")) node.parents.push_back(trimmed(g->text));
    node.table_line = d.line;
    const XmlElement* table = d.child("TABLE");
    if (!table) return;
    size_t size = table_size(net, node, place);
    std::vector<double> values = numbers_of(table->text, place, table->line);
    if (node.kind == NodeKind::Utility) {
        node.utilities = std::move(values);
        return;
    }
    if (values.size() != size)
        read_failure(place, table->line, format("table of '%s' has %zu entries, but there should be %zu",
                                                name.c_str(), values.size(), size));
    node.cpt.assign(values.begin(), values.end());
}

}  // namespace

ForeignNet read_xmlbif(std::string_view text, const ReadPlace& place) {
    XmlElement root = read_xml(text, place);
    if (!root.is("BIF")) read_failure(place, root.line, format("root element is <%s>, not <BIF>", root.name.c_str()));
    const XmlElement* network = root.child("NETWORK");
    if (!network) read_failure(place, root.line, "<BIF> has no <NETWORK>");
    ForeignNet net;
    if (const XmlElement* name = network->child("NAME")) net.name = trimmed(name->text);
    for (const XmlElement* p : network->all("PROPERTY")) {
        std::string t = trimmed(p->text);
        size_t eq = t.find('=');
        if (eq != std::string::npos) net.fields.emplace_back(trimmed(t.substr(0, eq)), trimmed(t.substr(eq + 1)));
    }
    for (const XmlElement* v : network->all("VARIABLE")) read_variable(*v, net, place);
    for (const XmlElement& c : network->children)
        if (c.is("DEFINITION") || c.is("PROBABILITY")) read_definition(c, net, place);
    return net;
}

std::string write_xmlbif(const ForeignNet& net) {
    std::string out = "<?xml version=\"1.0\"?>\n<BIF VERSION=\"0.3\">\n<NETWORK>\n";
    out += "<NAME>" + xml_escaped(net.name) + "</NAME>\n";
    for (const auto& [key, value] : net.fields)
        out += "\t<PROPERTY>" + xml_escaped(key + " = " + value) + "</PROPERTY>\n";
    for (const ForeignNode& node : net.nodes) {
        const char* type = node.kind == NodeKind::Decision ? "decision"
                           : node.kind == NodeKind::Utility ? "utility" : "nature";
        out += format("<VARIABLE TYPE=\"%s\">\n", type);
        out += "\t<NAME>" + xml_escaped(node.name) + "</NAME>\n";
        for (const std::string& s : node.states) out += "\t<OUTCOME>" + xml_escaped(s) + "</OUTCOME>\n";
        if (node.has_position)
            out += "\t<PROPERTY>position = (" + real_text(node.x) + ", " + real_text(node.y) + ")</PROPERTY>\n";
        for (const auto& [key, value] : node.fields)
            out += "\t<PROPERTY>" + xml_escaped(key + " = " + value) + "</PROPERTY>\n";
        out += "</VARIABLE>\n";
    }
    for (const ForeignNode& node : net.nodes) {
        out += "<DEFINITION>\n\t<FOR>" + xml_escaped(node.name) + "</FOR>\n";
        for (const std::string& p : node.parents) out += "\t<GIVEN>" + xml_escaped(p) + "</GIVEN>\n";
        if (!node.cpt.empty() || !node.utilities.empty()) {
            out += "\t<TABLE>";
            for (float p : node.cpt) out += prob_text(p) + " ";
            for (double u : node.utilities) out += real_text(u) + " ";
            out += "</TABLE>\n";
        }
        out += "</DEFINITION>\n";
    }
    out += "</NETWORK>\n</BIF>\n";
    return out;
}

}  // namespace ravelo
