// A small net built through the core, and helpers to parse and evaluate
// equations of its nodes.
#pragma once
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "base/env_fixture.h"
#include "base/failure.h"
#include "base/text.h"
#include "eqn/evaluate.h"
#include "eqn/parser.h"
#include "net/model.h"
#include "net/ops.h"

namespace ravelo {

class EquationTest : public EnvTest {
protected:
    void SetUp() override {
        EnvTest::SetUp();
        net = create_net(*env, "net");
    }

    Node* discrete(const char* name, std::initializer_list<const char*> states,
                   std::vector<double> levels = {}) {
        Node* n = create_node(*net, name, static_cast<int>(states.size()));
        size_t i = 0;
        for (const char* s : states) n->states[i++].name = s;
        n->levels = std::move(levels);
        return n;
    }
    Node* continuous(const char* name, std::vector<double> levels = {}) {
        Node* n = create_node(*net, name, 0);
        if (!levels.empty()) {
            n->levels = std::move(levels);
            n->states.resize(n->levels.size() - 1);
        }
        return n;
    }

    // Parses; on failure returns NULL and keeps the problem.
    std::unique_ptr<ParsedEquation> parse(Node* node, const std::string& text) {
        problem = ParseProblem();
        return parse_equation(text, *node, problem);
    }
    // The message of a failed parse ("" when it parsed).
    std::string parse_error(Node* node, const std::string& text) {
        auto eq = parse(node, text);
        return eq ? std::string() : problem.message;
    }
    // Value of a deterministic equation of a fresh parentless node.
    double value_of(const std::string& expression) {
        Node* x = scratch();
        auto eq = parse(x, "f () = " + expression);
        if (!eq) {
            ADD_FAILURE() << expression << ": " << problem.message;
            return -12345;
        }
        double values[1] = {0};
        return evaluate(*eq->expr, values, eq.get());
    }
    Node* scratch() {
        std::string name = format("scratch%d", scratch_count++);
        // Two boolean states, no levels: any value passes through unmapped.
        Node* n = create_node(*net, name, 2);
        n->states[0].name = "false";
        n->states[1].name = "true";
        return n;
    }
    // Messages of the reports made so far in this thread, oldest first.
    std::vector<std::string> reports() {
        std::vector<std::string> out;
        for (Report* r = next_report(*env, kNullError, nullptr); r; r = next_report(*env, kNullError, r))
            out.push_back(r->message);
        return out;
    }
    std::string last_report() {
        auto all = reports();
        return all.empty() ? std::string() : all.back();
    }
    bool was_reported(const std::string& message) {
        for (const std::string& m : reports())
            if (m == message) return true;
        ADD_FAILURE() << "not reported: " << message;
        return false;
    }
    int count_reports() { return static_cast<int>(reports().size()); }

    Net* net = nullptr;
    ParseProblem problem;
    int scratch_count = 0;
};

}  // namespace ravelo
