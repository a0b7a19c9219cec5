// The summing member of the "Noisy" family: its table, built only by
// conversion, against sums enumerated independently, and the parse-time
// checks of its argument layout.
#include <algorithm>
#include <array>

#include "base/random.h"
#include "eqn/to_table.h"
#include "eqn_fixture.h"

namespace ravelo {
namespace {

class NoisySumTest : public EquationTest {
protected:
    void SetUp() override {
        EquationTest::SetUp();
        a = discrete("A", {"false", "true"});
        c = discrete("C", {"false", "true"});
        x = discrete("X", {"x0", "x1", "x2", "x3"});
        connect(*a, *x);
        connect(*c, *x);
    }
    std::string convert(Node* node) {
        try {
            equation_to_table(*node, 1, false, false, nullptr);
        } catch (const Failure& f) {
            return f.report->message;
        }
        return "";
    }
    Node *a, *c, *x;
};

// Leak adds 1 with 0.1; A adds 1 with 0.5 and 2 with 0.2; C adds 2 and 3 with 0.3 each.
const char* const kSumEquation =
    "P (X | A, C) = NoisySumTableDist (X, 4, 0,  0.1, 0, 0,  A, 0.5, 0.2, 0,  C, 0, 0.3, 0.3)";

TEST_F(NoisySumTest, ConversionMatchesEnumeratedSums) {
    x->equation = kSumEquation;
    ASSERT_EQ(convert(x), "");
    const std::array<double, 4> leak{0.9, 0.1, 0, 0}, by_a{0.3, 0.5, 0.2, 0}, by_c{0.4, 0, 0.3, 0.3};
    const std::array<double, 4> none{1, 0, 0, 0};
    for (int ai = 0; ai < 2; ++ai)
        for (int ci = 0; ci < 2; ++ci) {
            std::array<double, 4> expect{};
            const auto& pa = ai ? by_a : none;
            const auto& pc = ci ? by_c : none;
            for (int l = 0; l < 4; ++l)
                for (int m = 0; m < 4; ++m)
                    for (int k = 0; k < 4; ++k) expect[static_cast<size_t>(std::min(l + m + k, 3))] += leak[l] * pa[m] * pc[k];
            size_t row = static_cast<size_t>(ai * 2 + ci);
            for (size_t s = 0; s < 4; ++s)
                EXPECT_NEAR(x->cpt[row * 4 + s], expect[s], 1e-6) << "row " << row << " state " << s;
        }
    EXPECT_EQ(x->chance, Chance::Chance);
}

TEST_F(NoisySumTest, EvaluatedOutsideConversionItIsRefused) {
    x->equation = kSumEquation;
    auto eq = parse(x, kSumEquation);
    ASSERT_TRUE(eq) << problem.message;
    double values[3] = {1, 1, 0};  // X, A, C
    std::string reason;
    EXPECT_TRUE(is_undef(evaluate_probability(*eq, values, reason)));
    EXPECT_EQ(last_report(), "convert this equation to CPT table before using, since it contains the NoisySumTableDist function");
    // The refusal does not stick: the same equation still converts afterwards.
    EXPECT_EQ(convert(x), "");
}

TEST_F(NoisySumTest, ComputedArgumentsAreCheckedWhenConverting) {
    // The offset and the amounts are only known per row here.
    x->equation = "P (X | A, C) = NoisySumTableDist (X, 4, A, 0.1, 0, 0, C, 0.5, 0.2, 0)";
    std::vector<float> before = x->cpt;
    EXPECT_EQ(convert(x).rfind("error evaluating equation of node 'X'", 0), 0u);
    EXPECT_TRUE(was_reported("third argument of function NoisySumTableDist must be zero with this version of Ravelo, but it is 1"));
    EXPECT_EQ(x->cpt, before);  // a failed conversion leaves the table alone
    x->equation = "P (X | A, C) = NoisySumTableDist (X, 4, 0, 0.1, 0, 0, C, 0.5, 0.4 + A, 0.2)";
    EXPECT_EQ(convert(x).rfind("error evaluating equation of node 'X'", 0), 0u);
    EXPECT_TRUE(was_reported("sum of probabilities for a condition of function NoisySumTableDist should not be more than 1, but it is 1.1"));
    // A count far beyond any int is refused, not converted.
    x->equation = "P (X | A, C) = NoisySumTableDist (X, max (8e16, A), 0, 0.1, 0, 0)";
    EXPECT_EQ(convert(x).rfind("error evaluating equation of node 'X'", 0), 0u);
    EXPECT_TRUE(was_reported("function 'NoisySumTableDist' is missing its last arguments"));
}

TEST_F(NoisySumTest, LayoutFaultsAreFoundWhileParsing) {
    struct Case {
        const char* text;
        const char* message;
    } cases[] = {
        {"P (X | A, C) = NoisySumTableDist (X, 4, 2, 0.1, 0, 0)",
         "third argument of function NoisySumTableDist must be zero with this version of >-Ravelo, but it is 2"},
        {"P (X | A, C) = NoisySumTableDist (X, 4, 0, 0.6, 0.3, 0.2)",
         "sum of probabilities for a condition of function NoisySumTableDist should not be more than 1, but it is 1.1"},
        {"P (X | A, C) = NoisySumTableDist (X, 4, 0, 0.1, 0, 0, A, 0.5, 0.2)",
         "function 'NoisySumTableDist' is missing its last arguments"},
        {"P (X | A, C) = NoisySumTableDist (X, 4, 0, 0.1, 0, 0, A, 0.5, C, 0, 0.3, 0.3)",
         "ninth argument of function 'NoisySumTableDist' should be of type real, but it is type state (perhaps wrong number of prob/amount pairs specified)"},
        {"P (X | A, C) = NoisySumTableDist (X, 4, 0, 0.1, 0, 0, A, 0.5, 0.2, 0, C, 0.3, A, 0.1)",
         "thirteenth argument of function 'NoisySumTableDist' should be of type real, but it is type state (perhaps wrong number of prob/amount pairs specified)"},
        {"P (X | A, C) = NoisySumTableDist (X, 4, 0, 0.1, 0, 0, 0.5, 0.2, 0, 0)",
         "seventh argument of function 'NoisySumTableDist' should be of type state, but it is type real (perhaps wrong number of prob/amount pairs specified)"},
        {"P (X | A, C) = NoisySumTableDist (X, 3, 0, 0.1, 0, 0)",
         "second argument of function NoisySumTableDist is 3, but it should be the number of states of the output variable (=4)"},
        {"P (X | A, C) = NoisySumTableDist (X, 4, 0, 1.5, 0, 0)",
         "fourth argument of function NoisySumTableDist should be a probability (between 0 and 1), but it is 1.5"},
    };
    for (const Case& k : cases) EXPECT_EQ(parse_error(x, k.text), k.message) << k.text;
}

TEST_F(NoisySumTest, StateIndicatorOnADiscreteCauseIsRefused) {
    Node* y = discrete("Y", {"false", "true"});
    connect(*a, *y);
    Node* t = continuous("T", {0, 1, 2});
    connect(*t, *y);
    EXPECT_EQ(parse_error(y, "P (Y | A, T) = NoisyOrDist (Y, 0.1, #A, 0.5)"),
              "A is not a continuous variable (>-node), however only continuous (but discretized) ones are allowed (in third argument of NoisyOrDist)");
    // A discretized continuous cause is what "#" is for.
    EXPECT_EQ(parse_error(y, "P (Y | A, T) = NoisyOrDist (Y, 0.1, #T, 0.5)"), "");
}

}  // namespace
}  // namespace ravelo
