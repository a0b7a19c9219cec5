#include "infer/relations.h"

#include "net_fixture.h"

namespace ravelo {
namespace {

class RelationsTest : public NetTest {
protected:
    // a -> c <- b, c -> d, e alone.
    void SetUp() override {
        NetTest::SetUp();
        a = node("a", 2);
        b = node("b", 2);
        c = node("c", 2, {a, b});
        d = node("d", 2, {c});
        e = node("e", 2);
    }
    std::vector<std::string> related(const char* text, Node* from) {
        std::vector<std::string> out;
        for (Node* n : related_nodes_of(parse_relation(text), {from})) out.push_back(n->name);
        std::sort(out.begin(), out.end());
        return out;
    }
    void expect_text_error(const char* text, const std::string& message) {
        EXPECT_THROW(parse_relation(text), Failure) << text;
        EXPECT_EQ(last_message(), message) << text;
    }
    using Names = std::vector<std::string>;
    Node *a, *b, *c, *d, *e;
};

TEST_F(RelationsTest, RelationsAndPlurals) {
    EXPECT_EQ(related("parents", c), (Names{"a", "b"}));
    EXPECT_EQ(related("children", a), (Names{"c"}));
    EXPECT_EQ(related("ancestors", d), (Names{"a", "b", "c"}));
    EXPECT_EQ(related("descendent", a), (Names{"c", "d"}));
    EXPECT_EQ(related("connected", a), (Names{"a", "b", "c", "d"}));
    EXPECT_EQ(related("connected exclude_self", a), (Names{"b", "c", "d"}));
    EXPECT_EQ(related("markov_blanket", a), (Names{"b", "c"}));
}

TEST_F(RelationsTest, DConnectionFollowsTheFindings) {
    // a and b are independent until c (or its descendant d) is observed.
    EXPECT_EQ(related("d_connected, exclude_self", a), (Names{"c", "d"}));
    d->finding.state = 0;
    EXPECT_EQ(related("d_connected, exclude_self", a), (Names{"b", "c"}));
    EXPECT_EQ(related("d_connected, exclude_self, include_evidence_nodes", a), (Names{"b", "c", "d"}));
    d->finding.state = kUndefState;
    c->finding.state = 1;
    EXPECT_EQ(related("d_connected, exclude_self", a), (Names{"b"}));
    EXPECT_EQ(related("d_connected", d), (Names{"d"}));
}

TEST_F(RelationsTest, ListOptions) {
    std::vector<Node*> out{e, a};
    RelationRequest r = parse_relation("parents, union");
    combine_into(out, related_nodes_of(r, {c}), r);
    EXPECT_EQ(out, (std::vector<Node*>{e, a, b}));
    r = parse_relation("parent append");
    combine_into(out, related_nodes_of(r, {c}), r);
    EXPECT_EQ(out, (std::vector<Node*>{e, a, b, a, b}));
    r = parse_relation("parent,subtract");
    combine_into(out, related_nodes_of(r, {d}), r);  // d's parent c is not there
    EXPECT_EQ(out.size(), 5u);
    r = parse_relation("connected intersection remove_duplicates");
    combine_into(out, related_nodes_of(r, {c}), r);
    EXPECT_EQ(out, (std::vector<Node*>{a, b}));
    r = parse_relation("child");
    combine_into(out, related_nodes_of(r, {a, b}), r);  // shared child counted once
    EXPECT_EQ(out, (std::vector<Node*>{c}));
}

TEST_F(RelationsTest, TextErrors) {
    expect_text_error("parents, nephews", "invalid relation 'nephews' starting at character position 9");
    expect_text_error("parent child", "more than one relation specified");
    expect_text_error("union", "no relation specified");
    expect_text_error("parent union append", "cannot choose more than one option from: 'append', 'union', 'intersection' and 'subtract'");
    expect_text_error("parent; child", "unexpected character ';' at position 6 in relation string");
    expect_text_error("abcdefghijklmnopqrstuvwxyz0123456789",
                      "relation token too long, starting abcdefghijklmnopqrstuvwxyz0123");
}

}  // namespace
}  // namespace ravelo
