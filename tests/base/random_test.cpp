#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "base/failure.h"
#include "base/random.h"
#include "env_fixture.h"

namespace ravelo {
namespace {

// A separate, plain transcription of the two shuffled generators, used as
// the yardstick for the engine's own.
struct Reference {
    long long idum, ix1 = 0, ix2 = 0, ix3 = 0;
    float r[98] = {};
    long long idum2, iy = 0, ir[97] = {};

    explicit Reference(long long magnitude) {
        idum = idum2 = -(magnitude % 2147483648LL) - 1;
        uniform();
        integer();
    }
    float uniform() {
        if (idum < 0) {
            ix1 = (54773 - idum) % 259200;
            ix1 = (7141 * ix1 + 54773) % 259200;
            ix2 = ix1 % 134456;
            ix1 = (7141 * ix1 + 54773) % 259200;
            ix3 = ix1 % 243000;
            for (int j = 1; j <= 97; j++) {
                ix1 = (7141 * ix1 + 54773) % 259200;
                ix2 = (8121 * ix2 + 28411) % 134456;
                r[j] = (float)((ix1 + ix2 / 134456.0) / 259200.0);
            }
            idum = -idum;
        }
        ix1 = (7141 * ix1 + 54773) % 259200;
        ix2 = (8121 * ix2 + 28411) % 134456;
        ix3 = (4561 * ix3 + 51349) % 243000;
        int j = 1 + (int)((97 * ix3) / 243000);
        float out = r[j];
        r[j] = (float)((ix1 + ix2 / 134456.0) / 259200.0);
        return out;
    }
    long long integer() {
        if (idum2 < 0) {
            idum2 = (150889 - idum2) % 714025;
            for (int j = 0; j < 97; j++) ir[j] = idum2 = (1366 * idum2 + 150889) % 714025;
            iy = idum2 = (1366 * idum2 + 150889) % 714025;
        }
        int j = (int)((97 * iy) / 714025);
        iy = ir[j];
        ir[j] = idum2 = (1366 * idum2 + 150889) % 714025;
        return iy;
    }
};

using RandomTest = EnvTest;

TEST(RandomStreams, MatchTheReferenceForManySeeds) {
    const long long seeds[] = {0, 3, -3, 12345, 2147483646, 2147483647, 99999999999LL};
    for (long long seed : seeds) {
        RandomGenerator ours(nullptr, seed);
        Reference ref(seed < 0 ? -seed : seed);
        for (int i = 0; i < 2000; ++i) {
            ASSERT_EQ(ours.uniform(), static_cast<double>(ref.uniform())) << seed << " #" << i;
            ASSERT_EQ(ours.integer(), ref.integer()) << seed << " #" << i;
        }
    }
}

TEST(RandomSeeds, DecimalTextsAreParsed) {
    long long s = -1;
    EXPECT_TRUE(RandomGenerator::parse_seed(" 42 ", s));
    EXPECT_EQ(s, 42);
    EXPECT_TRUE(RandomGenerator::parse_seed("-17", s));
    EXPECT_EQ(s, -17);
    EXPECT_TRUE(RandomGenerator::parse_seed("+8", s));
    EXPECT_EQ(s, 8);
    EXPECT_TRUE(RandomGenerator::parse_seed("2147483648", s));  // reduced modulo 2^31
    EXPECT_EQ(s, 0);
    EXPECT_TRUE(RandomGenerator::parse_seed("123456789012345678901234567890", s));
    EXPECT_GE(s, 0);
    for (const char* bad : {"", " ", "-", "12a", "1 2", "0x10", "3.5", "seed"})
        EXPECT_FALSE(RandomGenerator::parse_seed(bad, s)) << bad;
}

// The polar method, transcribed on its own.
double reference_normal(Reference& ref, bool& has_spare, float& spare) {
    if (has_spare) {
        has_spare = false;
        return spare;
    }
    double a, b, w;
    do {
        a = 2.0 * ref.uniform() - 1.0;
        b = 2.0 * ref.uniform() - 1.0;
        w = a * a + b * b;
    } while (w >= 1.0 || w == 0.0);
    float f = (float)std::sqrt(-2.0 * std::log(w) / w);
    spare = (float)(a * f);
    has_spare = true;
    return (float)(b * f);
}

TEST(RandomNormals, PolarMethodWithCachedSpare) {
    RandomGenerator g(nullptr, 5);
    Reference ref(5);
    bool has_spare = false;
    float spare = 0;
    for (int i = 0; i < 200; ++i) {
        double expected = reference_normal(ref, has_spare, spare);
        ASSERT_EQ(g.normal(10, 2), 10 + expected * 2) << i;
        ASSERT_EQ(g.has_spare, has_spare);
    }
}

TEST(RandomState, TextRecreatesTheGeneratorMidStream) {
    RandomGenerator g(nullptr, 31337);
    for (int i = 0; i < 37; ++i) g.uniform(), g.integer();
    g.normal(0, 1);  // leaves a spare normal cached
    ASSERT_TRUE(g.has_spare);
    std::string text = g.state_text();
    ASSERT_TRUE(RandomGenerator::is_state_text(text));
    RandomGenerator copy(nullptr, 1);
    ASSERT_TRUE(copy.read_state(text));
    EXPECT_EQ(copy.normal(0, 1), g.normal(0, 1));
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(copy.uniform(), g.uniform());
        ASSERT_EQ(copy.integer(), g.integer());
        ASSERT_EQ(copy.normal(1, 3), g.normal(1, 3));
    }
    EXPECT_EQ(copy.state_text(), g.state_text());
}

TEST(RandomState, DamagedTextsAreRefusedAndChangeNothing) {
    RandomGenerator g(nullptr, 9);
    std::string good = g.state_text();
    RandomGenerator target(nullptr, 4);
    std::string before = target.state_text();
    std::string damaged_range = good;
    damaged_range.insert(damaged_range.find(" u ") + 3, "-");  // negative seed word
    std::string bad_float = good;
    bad_float.replace(bad_float.find(" i ") - 8, 8, "7f800000");  // an infinite table entry
    const std::string cases[] = {good.substr(0, good.size() / 2), good + " 1",
                                 damaged_range, bad_float, "randgen-state-1", "randgen-state-1 u"};
    for (const std::string& text : cases) {
        EXPECT_FALSE(target.read_state(text)) << text.substr(0, 60);
        EXPECT_EQ(target.state_text(), before);
    }
}

// Finite intervals are uniform; an open end gives a tail scaled by the width
// of the neighbouring interval, or by 1 when that is unbounded or empty.
TEST_F(RandomTest, IntervalDrawsFollowTheirEnds) {
    const double inf = std::numeric_limits<double>::infinity();
    const double finite[] = {0, 1, 5}, tails[] = {-inf, 2, 5, 6, inf};
    const double two_states[] = {-inf, 0, inf}, empty_neighbour[] = {0, 4, 4, inf};
    RandomGenerator g(env, 11), twin(env, 11);
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(g.sample_in_interval(finite, 3, 1), 1 + 4 * twin.uniform());
        double u = twin.uniform();
        ASSERT_DOUBLE_EQ(g.sample_in_interval(tails, 5, 3), 6 + 1 * -std::log(u));
        u = twin.uniform();
        ASSERT_DOUBLE_EQ(g.sample_in_interval(tails, 5, 0), 2 - 3 * -std::log(u));
    }
    double u = twin.uniform();
    EXPECT_DOUBLE_EQ(g.sample_in_interval(two_states, 3, 1), -std::log(u));
    u = twin.uniform();
    EXPECT_DOUBLE_EQ(g.sample_in_interval(two_states, 3, 0), std::log(u));
    u = twin.uniform();
    EXPECT_DOUBLE_EQ(g.sample_in_interval(empty_neighbour, 4, 2), 4 - std::log(u));
}

TEST_F(RandomTest, BeliefsScaleTheTailByTheirRatio) {
    const double inf = std::numeric_limits<double>::infinity();
    const double levels[] = {0, 2, inf};
    const float beliefs[] = {0.8f, 0.2f};
    RandomGenerator g(env, 14), twin(env, 14);
    for (int i = 0; i < 50; ++i) {
        double p = beliefs[1];
        double u = twin.uniform() * p;
        if (u == 0) u = p;
        double x = g.sample_in_interval(levels, 3, 1, beliefs);
        ASSERT_DOUBLE_EQ(x, 2 + 2 * (p / beliefs[0]) * (std::log(p) - std::log(u)));
        ASSERT_GE(x, 2);
    }
}

TEST_F(RandomTest, NeighbourWithoutProbabilityIsAnInternalFailure) {
    const double inf = std::numeric_limits<double>::infinity();
    const double levels[] = {0, 2, inf};
    const float beliefs[] = {0.0f, 1.0f};
    RandomGenerator g(env, 15);
    try {
        g.sample_in_interval(levels, 3, 1, beliefs);
        FAIL() << "no failure";
    } catch (const Failure& f) {
        EXPECT_EQ(f.report->severity, kInternalError);
        EXPECT_NE(f.report->message.find("(bv[st] > 0)."), std::string::npos) << f.report->message;
    }
}

TEST_F(RandomTest, BothEndsOpenPicksTheSideWithTheIntegerStream) {
    const double inf = std::numeric_limits<double>::infinity();
    const double levels[] = {-inf, inf};
    RandomGenerator g(env, 16), twin(env, 16);
    int negatives = 0;
    for (int i = 0; i < 200; ++i) {
        double side = twin.integer() < kIntegerStreamModulus / 2 ? -1 : 1;
        double u = twin.uniform();
        double x = g.sample_in_interval(levels, 2, 0);
        ASSERT_DOUBLE_EQ(x, side * -std::log(u));
        negatives += x < 0;
    }
    EXPECT_GT(negatives, 50);
    EXPECT_LT(negatives, 150);
}

TEST_F(RandomTest, ZeroDrawIsTakenAsOne) {
    const double inf = std::numeric_limits<double>::infinity();
    const double levels[] = {1, 3, inf};
    RandomGenerator g(env, 17);
    for (float& entry : g.r) entry = 0;  // every shuffled value is now 0
    EXPECT_EQ(g.sample_in_interval(levels, 3, 1), 3.0);
}

TEST_F(RandomTest, DefaultGeneratorIsSeededWithThreeAndSharedSafely) {
    RandomGenerator& shared = default_generator(*env);
    EXPECT_TRUE(shared.takes_env_lock);
    EXPECT_EQ(&default_generator(*env), &shared);
    RandomGenerator alone(nullptr, 3);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 5000; ++i) shared.uniform();
        });
    for (std::thread& t : threads) t.join();
    for (int i = 0; i < 10000; ++i) alone.uniform();
    EXPECT_EQ(shared.uniform(), alone.uniform());  // no draw was torn or lost
}

}  // namespace
}  // namespace ravelo
