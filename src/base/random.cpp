#include "base/random.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <optional>

#include "base/environment.h"
#include "base/failure.h"
#include "base/text.h"

namespace ravelo {
namespace {

// The uniform stream's three congruential generators.
constexpr std::int64_t kM1 = 259200, kA1 = 7141, kC1 = 54773;
constexpr std::int64_t kM2 = 134456, kA2 = 8121, kC2 = 28411;
constexpr std::int64_t kM3 = 243000, kA3 = 4561, kC3 = 51349;
// The integer stream's generator.
constexpr std::int64_t kM = kIntegerStreamModulus, kA = 1366, kC = 150889;

constexpr double kTiny = 2.2250738585072014e-308;  // smallest normal double
constexpr const char* kStatePrefix = "randgen-state-1";

// Takes the environment's lock for the default generator, which threads share.
class DrawLock {
public:
    explicit DrawLock(const RandomGenerator& g) {
        if (g.takes_env_lock && g.env) lock_.emplace(g.env->lock);
    }

private:
    std::optional<std::lock_guard<std::recursive_mutex>> lock_;
};

std::int32_t next1(std::int64_t x) { return static_cast<std::int32_t>((kA1 * x + kC1) % kM1); }
std::int32_t next2(std::int64_t x) { return static_cast<std::int32_t>((kA2 * x + kC2) % kM2); }
std::int32_t next3(std::int64_t x) { return static_cast<std::int32_t>((kA3 * x + kC3) % kM3); }
std::int32_t next_int(std::int64_t x) { return static_cast<std::int32_t>((kA * x + kC) % kM); }

float table_entry(std::int32_t a, std::int32_t b) {
    return static_cast<float>((a + b / static_cast<double>(kM2)) / static_cast<double>(kM1));
}

std::uint32_t float_bits(float f) {
    std::uint32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    return bits;
}

float bits_float(std::uint32_t bits) {
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

// Reads whitespace-separated fields of a state text, front to back.
class StateReader {
public:
    explicit StateReader(std::string_view text) : text_(text) {}
    bool word(std::string_view expected) { return next() == expected; }
    bool integer(std::int32_t& out, std::int64_t lo, std::int64_t hi) {
        std::string_view w = next();
        if (w.empty() || w.size() > 11) return false;
        std::int64_t v = 0;
        size_t i = w[0] == '-' ? 1 : 0;
        if (i == w.size()) return false;
        for (; i < w.size(); ++i) {
            if (w[i] < '0' || w[i] > '9') return false;
            v = v * 10 + (w[i] - '0');
        }
        if (w[0] == '-') v = -v;
        if (v < lo || v > hi) return false;
        out = static_cast<std::int32_t>(v);
        return true;
    }
    bool real(float& out) {
        std::string_view w = next();
        if (w.size() != 8) return false;
        std::uint32_t bits = 0;
        for (char c : w) {
            int d = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
            if (d < 0) return false;
            bits = bits << 4 | static_cast<std::uint32_t>(d);
        }
        out = bits_float(bits);
        return std::isfinite(out);
    }
    bool at_end() { return next().empty(); }

private:
    std::string_view next() {
        size_t i = pos_;
        while (i < text_.size() && text_[i] == ' ') ++i;
        size_t j = i;
        while (j < text_.size() && text_[j] != ' ') ++j;
        pos_ = j;
        return text_.substr(i, j - i);
    }
    std::string_view text_;
    size_t pos_ = 0;
};

}  // namespace

RandomGenerator::RandomGenerator(Environment* owner, long long seed)
    : Tagged(kRandGenType), env(owner) {
    unsigned long long magnitude = seed < 0 ? 0ULL - static_cast<unsigned long long>(seed)
                                            : static_cast<unsigned long long>(seed);
    std::int32_t word = static_cast<std::int32_t>(-static_cast<std::int64_t>(magnitude % 0x80000000ULL) - 1);
    idum = word;
    idum2 = word;
    uniform_unlocked();
    integer_unlocked();
}

double RandomGenerator::uniform_unlocked() {
    if (idum < 0) {
        ix1 = static_cast<std::int32_t>((kC1 - static_cast<std::int64_t>(idum)) % kM1);
        ix1 = next1(ix1);
        ix2 = static_cast<std::int32_t>(ix1 % kM2);
        ix1 = next1(ix1);
        ix3 = static_cast<std::int32_t>(ix1 % kM3);
        for (int j = 1; j <= 97; ++j) {
            ix1 = next1(ix1);
            ix2 = next2(ix2);
            r[j] = table_entry(ix1, ix2);
        }
        idum = idum == INT32_MIN ? INT32_MAX : -idum;
    }
    ix1 = next1(ix1);
    ix2 = next2(ix2);
    ix3 = next3(ix3);
    int j = 1 + static_cast<int>((97 * static_cast<std::int64_t>(ix3)) / kM3);
    RAVELO_ASSERT(j >= 1 && j <= 97);
    float result = r[j];
    r[j] = table_entry(ix1, ix2);
    return result;
}

std::int32_t RandomGenerator::integer_unlocked() {
    if (idum2 < 0) {
        std::int64_t start = (kC - static_cast<std::int64_t>(idum2)) % kM;
        idum2 = static_cast<std::int32_t>(start < 0 ? -start : start);
        for (int j = 0; j < 97; ++j) {
            idum2 = next_int(idum2);
            ir[j] = idum2;
        }
        idum2 = next_int(idum2);
        iy = idum2;
    }
    int j = static_cast<int>((97 * static_cast<std::int64_t>(iy)) / kM);
    RAVELO_ASSERT(j >= 0 && j < 97);
    iy = ir[j];
    idum2 = next_int(idum2);
    ir[j] = idum2;
    return iy;
}

double RandomGenerator::uniform() {
    DrawLock lock(*this);
    return uniform_unlocked();
}

std::int32_t RandomGenerator::integer() {
    DrawLock lock(*this);
    return integer_unlocked();
}

// The polar method; the factor and the cached spare keep single precision,
// which is part of the reproducible sequence.
double RandomGenerator::normal(double mean, double stddev) {
    DrawLock lock(*this);
    float deviate;
    if (has_spare) {
        has_spare = false;
        deviate = spare;
    } else {
        double a, b, w;
        do {
            a = 2 * uniform_unlocked() - 1;
            b = 2 * uniform_unlocked() - 1;
            w = a * a + b * b;
        } while (w >= 1 || w == 0);  // w == 0 would give no direction at all
        float f = static_cast<float>(std::sqrt(-2 * std::log(w) / w));
        spare = static_cast<float>(a * f);
        has_spare = true;
        deviate = static_cast<float>(b * f);
    }
    return mean + deviate * stddev;
}

// end + scale * ln(p / u) with u uniform in (tiny, p]; a zero draw counts as p.
double RandomGenerator::exponential_tail(double end, double scale, double p) {
    double u = uniform_unlocked() * p;
    if (u == 0) u = p;
    if (u <= kTiny) u = kTiny;
    return end + scale * (std::log(p) - std::log(u));
}

double RandomGenerator::sample_in_interval(const double* levels, int num_levels, int st,
                                           const float* beliefs) {
    RAVELO_ASSERT(levels && st >= 0 && st + 1 < num_levels);
    DrawLock lock(*this);
    double lo = levels[st], hi = levels[st + 1];
    bool lo_open = std::isinf(lo), hi_open = std::isinf(hi);
    if (!lo_open && !hi_open) return lo + (hi - lo) * uniform_unlocked();
    if (lo_open && hi_open) {
        double side = integer_unlocked() < kM / 2 ? -1 : 1;
        double u = uniform_unlocked();
        if (u == 0) u = 1;
        return side * -std::log(u);
    }
    // One open end: an exponential tail from the finite end e, scaled by the
    // neighbour that shares e, moving away from e into the open side.
    int nb = hi_open ? st - 1 : st + 1;
    double end = hi_open ? lo : hi;
    double direction = hi_open ? 1 : -1;
    double width = 0;
    if (nb >= 0 && nb + 1 < num_levels) width = levels[nb + 1] - levels[nb];
    if (!(std::isfinite(width) && width > 0)) return exponential_tail(end, direction, 1);
    if (!beliefs) return exponential_tail(end, direction * width, 1);
    if (!(beliefs[nb] > 0)) internal_failure(__FILE__, __LINE__, "bv[st] > 0");
    double p = beliefs[st];
    if (!(p > 0)) return end;  // a state without probability has no tail
    return exponential_tail(end, direction * width * p / beliefs[nb], p);
}

std::string RandomGenerator::state_text() const {
    std::string text = format("%s u %d %d %d %d", kStatePrefix, idum, ix1, ix2, ix3);
    for (int j = 1; j <= 97; ++j) text += format(" %08x", float_bits(r[j]));
    text += format(" i %d %d", idum2, iy);
    for (int j = 0; j < 97; ++j) text += format(" %d", ir[j]);
    text += format(" n %d %08x", has_spare ? 1 : 0, float_bits(spare));
    return text;
}

bool RandomGenerator::is_state_text(std::string_view text) {
    size_t start = text.find_first_not_of(' ');
    return start != std::string_view::npos && text.substr(start).starts_with(kStatePrefix);
}

bool RandomGenerator::read_state(std::string_view text) {
    RandomGenerator g(*this);
    StateReader in(text);
    std::int32_t spare_flag = 0;
    bool ok = in.word(kStatePrefix) && in.word("u") && in.integer(g.idum, 0, INT32_MAX) &&
              in.integer(g.ix1, 0, kM1 - 1) && in.integer(g.ix2, 0, kM2 - 1) &&
              in.integer(g.ix3, 0, kM3 - 1);
    for (int j = 1; ok && j <= 97; ++j) ok = in.real(g.r[j]) && g.r[j] >= 0 && g.r[j] <= 1;
    ok = ok && in.word("i") && in.integer(g.idum2, 0, kM - 1) && in.integer(g.iy, 0, kM - 1);
    for (int j = 0; ok && j < 97; ++j) ok = in.integer(g.ir[j], 0, kM - 1);
    ok = ok && in.word("n") && in.integer(spare_flag, 0, 1) && in.real(g.spare) && in.at_end();
    if (!ok) return false;
    g.has_spare = spare_flag == 1;
    idum = g.idum, ix1 = g.ix1, ix2 = g.ix2, ix3 = g.ix3;
    std::memcpy(r, g.r, sizeof r);
    idum2 = g.idum2, iy = g.iy;
    std::memcpy(ir, g.ir, sizeof ir);
    has_spare = g.has_spare, spare = g.spare;
    return true;
}

bool RandomGenerator::parse_seed(std::string_view text, long long& seed) {
    size_t i = 0, n = text.size();
    while (i < n && (text[i] == ' ' || text[i] == '\t')) ++i;
    bool negative = i < n && text[i] == '-';
    if (i < n && (text[i] == '-' || text[i] == '+')) ++i;
    size_t digits = i;
    unsigned long long magnitude = 0;
    for (; i < n && text[i] >= '0' && text[i] <= '9'; ++i)
        magnitude = (magnitude * 10 + static_cast<unsigned>(text[i] - '0')) % 0x80000000ULL;
    if (i == digits) return false;
    while (i < n && (text[i] == ' ' || text[i] == '\t')) ++i;
    if (i != n) return false;
    seed = negative ? -static_cast<long long>(magnitude) : static_cast<long long>(magnitude);
    return true;
}

RandomGenerator& default_generator(Environment& env) {
    std::lock_guard<std::recursive_mutex> guard(env.lock);
    if (!env.default_generator || env.default_generator->type_code() != kRandGenType) {
        RandomGenerator* g = env.store.make<RandomGenerator>(&env, 3);
        g->takes_env_lock = true;
        env.default_generator = g;
    }
    return *static_cast<RandomGenerator*>(env.default_generator);
}

}  // namespace ravelo
