// Every exported function that takes a handle, called with NULL, with a
// deleted object and with an object of another type in each handle
// position in turn: always a report, never a crash.  The calls are
// generated from the public header when the tests are built.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ravelo/ravelo.h"

namespace {

enum class Kind { environ_ns, report_ns, stream_ns, randgen_ns, net_bn, node_bn, nodelist_bn };
enum class Fault { Null, Deleted, Foreign };

// One live object of every kind, a deleted one of every kind, and the
// argument position under test.
class Arguments {
public:
    Arguments(environ_ns* env, int position, Fault fault) : env_(env), position_(position), fault_(fault) {
        live_.net = NewNet_bn("Live", env);
        live_.node = NewNode_bn("A", 2, live_.net);
        AddLink_bn(NewNode_bn("B", 2, live_.net), live_.node);
        live_.list = NewNodeList2_bn(0, live_.net);
        live_.stream = NewMemoryStream_ns("live.dne", env, nullptr);
        live_.randgen = NewRandomGenerator_ns("1", env, nullptr);
        live_.report = NewError_ns(1, NOTICE_ERR, FROM_DEVELOPER_CND, "a live report");
        scratch_.fill(0);
    }

    template <class Handle>
    Handle* handle(int position) {
        if (position != position_) return static_cast<Handle*>(live(kind_of<Handle>()));
        if (fault_ == Fault::Null) return nullptr;
        if (fault_ == Fault::Deleted) return static_cast<Handle*>(deleted(kind_of<Handle>()));
        // A live object of another type in its place.
        Kind other = kind_of<Handle>() == Kind::net_bn ? Kind::node_bn : Kind::net_bn;
        return static_cast<Handle*>(live(other));
    }
    // Room for whatever a pointer argument points to, all zero (so strings are empty).
    template <class Pointer>
    Pointer buffer() {
        return reinterpret_cast<Pointer>(scratch_.data());
    }

    static void make_deleted(environ_ns* env);

private:
    template <class Handle>
    static Kind kind_of();
    void* live(Kind kind) const {
        switch (kind) {
            case Kind::environ_ns: return env_;
            case Kind::report_ns: return live_.report;
            case Kind::stream_ns: return live_.stream;
            case Kind::randgen_ns: return live_.randgen;
            case Kind::net_bn: return live_.net;
            case Kind::node_bn: return live_.node;
            case Kind::nodelist_bn: return live_.list;
        }
        return nullptr;
    }
    static void* deleted(Kind kind) { return deleted_[static_cast<size_t>(kind)]; }

    struct {
        net_bn* net;
        node_bn* node;
        nodelist_bn* list;
        stream_ns* stream;
        randgen_ns* randgen;
        report_ns* report;
    } live_{};
    environ_ns* env_;
    int position_;
    Fault fault_;
    alignas(double) std::array<unsigned char, 4096> scratch_;
    static inline std::array<void*, 7> deleted_{};
};

template <> Kind Arguments::kind_of<environ_ns>() { return Kind::environ_ns; }
template <> Kind Arguments::kind_of<report_ns>() { return Kind::report_ns; }
template <> Kind Arguments::kind_of<stream_ns>() { return Kind::stream_ns; }
template <> Kind Arguments::kind_of<randgen_ns>() { return Kind::randgen_ns; }
template <> Kind Arguments::kind_of<net_bn>() { return Kind::net_bn; }
template <> Kind Arguments::kind_of<node_bn>() { return Kind::node_bn; }
template <> Kind Arguments::kind_of<nodelist_bn>() { return Kind::nodelist_bn; }

// Objects of every kind made and then deleted (an environment closed).
void Arguments::make_deleted(environ_ns* env) {
    char mesg[MESG_LEN_ns];
    environ_ns* closed = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
    InitRavelo2_bn(closed, mesg);
    CloseRavelo_bn(closed, mesg);
    net_bn* net = NewNet_bn("Doomed", env);
    node_bn* node = NewNode_bn("Gone", 2, net);
    nodelist_bn* list = NewNodeList2_bn(0, net);
    stream_ns* stream = NewMemoryStream_ns("gone.dne", env, nullptr);
    randgen_ns* randgen = NewRandomGenerator_ns("1", env, nullptr);
    report_ns* report = NewError_ns(1, NOTICE_ERR, FROM_DEVELOPER_CND, "a report to delete");
    DeleteNode_bn(node);
    DeleteNodeList_bn(list);
    DeleteNet_bn(net);
    DeleteStream_ns(stream);
    DeleteRandomGen_ns(randgen);
    ClearError_ns(report);
    deleted_ = {closed, report, stream, randgen, net, node, list};
}

struct HandleCall {
    const char* function;
    std::vector<std::pair<int, Kind>> handles;  // position and kind of each handle argument
    std::function<void(Arguments&)> call;
};

const HandleCall kHandleCalls[] = {
#include "handle_calls.inc"
};

// Positions where NULL has a meaning of its own: the default environment,
// every net or node, the start of a walk, no parent, no net, no order.
bool null_has_meaning(const std::string& function, int position, Kind kind) {
    static const std::set<std::pair<std::string, int>> meaningful = {
        {"GetError_ns", 2},          {"AddNetListener_bn", 0},    {"AddNodeListener_bn", 0},
        {"SwitchNodeParent_bn", 2},  {"NewNodeList2_bn", 1},      {"IndexOfNodeInList_bn", 0},
        {"SetNetElimOrder_bn", 0}};
    return kind == Kind::environ_ns || meaningful.count({function, position}) > 0;
}

// Arguments whose faults are not reports: the reserved environment of a new
// one is never read, and closing tells of an ill-formed environment in its
// message and result (a closed environment has no report list left).
bool told_otherwise(const std::string& function, int position) {
    return (function == "NewRaveloEnviron_ns" && position == 1) || (function == "CloseRavelo_bn" && position == 0);
}

const char* fault_name(Fault f) { return f == Fault::Null ? "NULL" : f == Fault::Deleted ? "deleted" : "foreign"; }

class HandleChecks : public ::testing::TestWithParam<checking_ns> {
protected:
    void SetUp() override {
        env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        char mesg[MESG_LEN_ns];
        ASSERT_EQ(InitRavelo2_bn(env, mesg), 0);
        Arguments::make_deleted(env);
        ArgumentChecking_ns(GetParam(), env);
    }
    void TearDown() override {
        char mesg[MESG_LEN_ns];
        CloseRavelo_bn(env, mesg);
    }
    environ_ns* env = nullptr;
};

TEST_P(HandleChecks, EveryHandleArgumentIsCheckedBeforeUse) {
    int cases = 0;
    for (const HandleCall& c : kHandleCalls)
        for (const auto& [position, kind] : c.handles)
            for (Fault fault : {Fault::Null, Fault::Deleted, Fault::Foreign}) {
                if (told_otherwise(c.function, position)) continue;
                if (fault == Fault::Null && null_has_meaning(c.function, position, kind)) continue;
                ClearErrors_ns(env, INTERNAL_ERR);
                Arguments arguments(env, position, fault);
                c.call(arguments);
                ++cases;
                EXPECT_NE(GetError_ns(env, ERROR_ERR, nullptr), nullptr)
                    << c.function << ": no report for a " << fault_name(fault) << " handle in argument " << position;
            }
    EXPECT_GT(cases, 300);
}

INSTANTIATE_TEST_SUITE_P(AtEveryCheckingLevel, HandleChecks,
                         ::testing::Values(QuickCheck, RegularCheck, CompleteCheck));

}  // namespace
