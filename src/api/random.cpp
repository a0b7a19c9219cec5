// Random generators family.
#include <cstring>

#include "api/handles.h"
#include "base/random.h"
#include "base/text.h"

using namespace ravelo;

namespace {

randgen_ns* handle_of(RandomGenerator* g) { return reinterpret_cast<randgen_ns*>(g); }

RandomGenerator& checked_generator(ApiFrame& frame, randgen_ns* handle) {
    ApiFrame::check(handle, kRandGenHandle);
    RandomGenerator* g = core_of<RandomGenerator>(handle);
    frame.use(*g->env);
    return *g;
}

}  // namespace

randgen_ns* NewRandomGenerator_ns(const char* seed, environ_ns* env, const char* options) {
    ApiFrame frame("NewRandomGenerator_ns");
    return frame.run<randgen_ns*>(nullptr, [&]() -> randgen_ns* {
        Environment& e = frame.environment(env);
        ApiFrame::check_no_options(options);
        if (!seed) fail(5660, "NULL passed for argument 'seed'");
        if (RandomGenerator::is_state_text(seed)) {
            RandomGenerator probe(&e, 0);
            if (!probe.read_state(seed))
                fail(5661, "argument 'seed' starts like a >-RandGen state text, but it is damaged or "
                           "incomplete:  %.80s",
                     seed);
            RandomGenerator* g = e.store.make<RandomGenerator>(probe);
            return handle_of(g);
        }
        long long number;
        if (!RandomGenerator::parse_seed(seed, number))
            fail(5662, "argument 'seed' must be a decimal integer, or a state text from "
                       "GetRandomGenState_ns, but it is:  %.80s",
                 seed);
        return handle_of(e.store.make<RandomGenerator>(&e, number));
    });
}

void DeleteRandomGen_ns(randgen_ns* rand) {
    ApiFrame frame("DeleteRandomGen_ns");
    frame.run([&] {
        RandomGenerator& g = checked_generator(frame, rand);
        g.kill();
        g.state_buffer = std::string();
    });
}

void GenerateRandomNumbers_ns(randgen_ns* rand, double* results, int num, const char* options) {
    ApiFrame frame("GenerateRandomNumbers_ns");
    frame.run([&] {
        RandomGenerator& g = checked_generator(frame, rand);
        bool integers = options && std::strcmp(options, "integer") == 0;
        if (options && *options && !integers)
            fail(5663, "argument 'options' is \"%.80s\", but it must be empty, null (0), or "
                       "\"integer\"",
                 options);
        if (num < 0) fail(5664, "argument 'num' is %d, but it must be 0 or greater", num);
        if (!results && num > 0) fail(5665, "NULL passed for argument 'results'");
        for (int i = 0; i < num; ++i) results[i] = integers ? g.integer() : g.uniform();
    });
}

const char* GetRandomGenState_ns(randgen_ns* rand, const char* options) {
    ApiFrame frame("GetRandomGenState_ns");
    return frame.run<const char*>(nullptr, [&]() -> const char* {
        RandomGenerator& g = checked_generator(frame, rand);
        ApiFrame::check_no_options(options);
        g.state_buffer = g.state_text();
        return g.state_buffer.c_str();
    });
}
