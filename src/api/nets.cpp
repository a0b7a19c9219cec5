// Nets family.
#include "api/handles.h"
#include "net/ops.h"

using namespace ravelo;

net_bn* NewNet_bn(const char* name, environ_ns* env) {
    ApiFrame frame("NewNet_bn");
    return frame.run<net_bn*>(nullptr, [&]() -> net_bn* {
        Environment& e = frame.environment(env);
        if (!name) fail(5104, "NULL passed for name");
        return handle_of(create_net(e, name));
    });
}

void DeleteNet_bn(net_bn* net) {
    ApiFrame frame("DeleteNet_bn");
    frame.run([&] { delete_net(checked_net(frame, net)); });
}

const char* GetNetName_bn(const net_bn* net) {
    ApiFrame frame("GetNetName_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_net(frame, net).name.c_str(); });
}
