#include "io/noisy_max.h"

#include <algorithm>

#include "base/text.h"
#include "io/xml_formats.h"

namespace ravelo {
namespace {

struct Cause {
    size_t states = 0;
    // P(the cause alone leaves the node at state index >= k), per cause state and k = 0..n.
    std::vector<double> at_least;
};

// Tail sums of a distribution over n states: tail[k] = sum of dist[k..n-1], tail[n] = 0.
void add_tail(const double* dist, size_t n, std::vector<double>& out) {
    std::vector<double> tail(n + 1, 0.0);
    for (size_t k = n; k-- > 0;) tail[k] = tail[k + 1] + dist[k];
    out.insert(out.end(), tail.begin(), tail.end());
}

}  // namespace

void read_noisy_max(const XmlElement& e, const ForeignNet& net, ForeignNode& node, const ReadPlace& place) {
    const size_t n = node.states.size();
    if (n == 0) read_failure(place, e.line, format("noisy-MAX node '%s' has no states", node.name.c_str()));
    const XmlElement* p = e.child("parameters");
    if (!p) read_failure(place, e.line, format("noisy-MAX node '%s' has no <parameters>", node.name.c_str()));
    std::vector<double> params = numbers_of(p->text, place, p->line);
    std::vector<int> strengths;
    if (const XmlElement* s = e.child("strengths"))
        for (double x : numbers_of(s->text, place, s->line)) strengths.push_back(static_cast<int>(x));

    std::vector<Cause> causes;
    size_t with_distinguished = n, without = n;  // the leak's share
    for (const std::string& name : node.parents) {
        int index = find_node(net, name);
        if (index < 0) read_failure(place, e.line, format("undefined >-node '%s'", name.c_str()));
        Cause c;
        c.states = net.nodes[static_cast<size_t>(index)].states.size();
        if (c.states == 0) read_failure(place, e.line, format("parent '%s' has no states", name.c_str()));
        with_distinguished += c.states * n;
        without += (c.states - 1) * n;
        causes.push_back(std::move(c));
    }
    // Some writers leave out the distinguished states' fixed distributions.
    const bool full = params.size() == with_distinguished;
    if (!full && params.size() != without)
        read_failure(place, p->line, format("noisy-MAX node '%s' has %zu parameters, but there should be %zu",
                                            node.name.c_str(), params.size(), with_distinguished));
    size_t total_states = 0;
    for (const Cause& c : causes) total_states += c.states;
    if (!strengths.empty() && strengths.size() != total_states)
        read_failure(place, e.line, format("noisy-MAX node '%s' has %zu strengths, but there should be %zu",
                                           node.name.c_str(), strengths.size(), total_states));

    std::vector<double> distinguished(n, 0.0);
    if (n) distinguished[n - 1] = 1.0;
    size_t at = 0, strength_at = 0;
    for (Cause& c : causes) {
        std::vector<const double*> by_state(c.states, nullptr);
        for (size_t rank = 0; rank < c.states; ++rank) {
            size_t state = rank;
            if (!strengths.empty()) {
                int s = strengths[strength_at + rank];
                if (s < 0 || static_cast<size_t>(s) >= c.states || by_state[static_cast<size_t>(s)])
                    read_failure(place, e.line, format("noisy-MAX node '%s' has a bad strength order",
                                                       node.name.c_str()));
                state = static_cast<size_t>(s);
            }
            if (rank + 1 == c.states && !full) {
                by_state[state] = distinguished.data();
            } else {
                by_state[state] = &params[at];
                at += n;
            }
        }
        strength_at += c.states;
        for (const double* dist : by_state) add_tail(dist, n, c.at_least);
    }
    std::vector<double> leak;
    add_tail(&params[at], n, leak);

    size_t rows = 1;
    for (const Cause& c : causes) rows *= c.states;
    node.cpt.assign(rows * n, 0.0f);
    std::vector<size_t> condition(causes.size(), 0);
    std::vector<double> at_least(n + 1);
    for (size_t row = 0; row < rows; ++row) {
        // The node is at index >= k only when the leak and every cause leave it there.
        for (size_t k = 0; k <= n; ++k) {
            double product = leak[k];
            for (size_t i = 0; i < causes.size(); ++i) product *= causes[i].at_least[condition[i] * (n + 1) + k];
            at_least[k] = product;
        }
        for (size_t k = 0; k < n; ++k)
            node.cpt[row * n + k] = static_cast<float>(std::max(0.0, at_least[k] - at_least[k + 1]));
        for (size_t i = causes.size(); i-- > 0;) {  // the last parent varies fastest
            if (++condition[i] < causes[i].states) break;
            condition[i] = 0;
        }
    }
}

}  // namespace ravelo
