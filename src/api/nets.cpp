// Nets family.
#include "api/handles.h"
#include "api/userfields.h"
#include "net/copy.h"
#include "net/listeners.h"
#include "net/names.h"
#include "net/ops.h"

using namespace ravelo;

net_bn* NewNet_bn(const char* name, environ_ns* env) {
    ApiFrame frame("NewNet_bn");
    return frame.run<net_bn*>(nullptr, [&]() -> net_bn* {
        Environment& e = frame.environment(env);
        require_legal_name(name, "net");
        Net* net = create_net(e, name);
        notify_net(*net, kCreateEvent, nullptr);
        return handle_of(net);
    });
}

net_bn* CopyNet_bn(const net_bn* net, const char* new_name, environ_ns* new_env, const char* options) {
    ApiFrame frame("CopyNet_bn");
    return frame.run<net_bn*>(nullptr, [&]() -> net_bn* {
        Net& original = checked_net(frame, net);
        Environment& e = new_env ? frame.environment(new_env) : *original.env;
        if (new_name && !*new_name) fail(5212, "empty string passed for name");
        require_legal_name(new_name, "net");
        CopyOptions parsed = parse_copy_options(options);
        Net* copy = copy_net(original, e, new_name, parsed);
        notify_net(original, kDuplicateEvent, copy);
        return handle_of(copy);
    });
}

void DeleteNet_bn(net_bn* net) {
    ApiFrame frame("DeleteNet_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        for (Node* node : std::vector<Node*>(n.nodes.nodes)) notify_node(*node, kRemoveEvent, nullptr);
        notify_net(n, kRemoveEvent, nullptr);
        if (!n.is_dead()) delete_net(n);  // a listener may have deleted it already
    });
}

net_bn* GetNthNet_bn(int nth, environ_ns* env) {
    ApiFrame frame("GetNthNet_bn");
    return frame.run<net_bn*>(nullptr, [&]() -> net_bn* {
        Environment& e = frame.environment(env);
        if (nth < 0) fail(5214, "argument 'nth' is negative (%d)", nth);
        if (static_cast<size_t>(nth) >= e.nets.size()) return nullptr;
        return handle_of(static_cast<Net*>(e.nets[static_cast<size_t>(nth)]));
    });
}

const char* GetNetName_bn(const net_bn* net) {
    ApiFrame frame("GetNetName_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_net(frame, net).name.c_str(); });
}

void SetNetName_bn(net_bn* net, const char* name) {
    ApiFrame frame("SetNetName_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        require_legal_name(name, "net");
        n.name = name;
    });
}

const char* GetNetTitle_bn(const net_bn* net) {
    ApiFrame frame("GetNetTitle_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_net(frame, net).title.c_str(); });
}

void SetNetTitle_bn(net_bn* net, const char* title) {
    ApiFrame frame("SetNetTitle_bn");
    frame.run([&] { checked_net(frame, net).title = title ? title : ""; });
}

const char* GetNetComment_bn(const net_bn* net) {
    ApiFrame frame("GetNetComment_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_net(frame, net).comment.c_str(); });
}

void SetNetComment_bn(net_bn* net, const char* comment) {
    ApiFrame frame("SetNetComment_bn");
    frame.run([&] { checked_net(frame, net).comment = comment ? comment : ""; });
}

const nodelist_bn* GetNetNodes2_bn(const net_bn* net, const char* options) {
    ApiFrame frame("GetNetNodes2_bn");
    return frame.run<const nodelist_bn*>(nullptr, [&]() -> const nodelist_bn* {
        Net& n = checked_net(frame, net);
        if (options && *options)
            fail(5215, "argument 'options' must be empty or null (0) with this version of >-Ravelo, "
                       "but it is:  %.80s",
                 options);
        return handle_of(&n.nodes);
    });
}

node_bn* GetNodeNamed_bn(const char* name, const net_bn* net) {
    ApiFrame frame("GetNodeNamed_bn");
    return frame.run<node_bn*>(nullptr, [&]() -> node_bn* {
        Net& n = checked_net(frame, net);
        if (!name) fail(5104, "NULL passed for name");
        return handle_of(n.find(name));
    });
}

const char* GetNetFileName_bn(const net_bn* net) {
    ApiFrame frame("GetNetFileName_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_net(frame, net).file_name.c_str(); });
}

const char* GetNetUserField_bn(const net_bn* net, const char* name, int* length, int kind) {
    ApiFrame frame("GetNetUserField_bn");
    if (length) *length = -1;
    return frame.run<const char*>(nullptr, [&] {
        return user_field(checked_net(frame, net).user_fields, name, length, kind);
    });
}

void GetNetNthUserField_bn(const net_bn* net, int index, const char** name, const char** value,
                           int* length, int kind) {
    ApiFrame frame("GetNetNthUserField_bn");
    if (name) *name = nullptr;
    frame.run([&] { nth_user_field(checked_net(frame, net).user_fields, index, name, value, length, kind); });
}

void SetNetUserField_bn(net_bn* net, const char* name, const void* data, int length, int kind) {
    ApiFrame frame("SetNetUserField_bn");
    frame.run([&] { set_user_field(checked_net(frame, net).user_fields, name, data, length, kind); });
}

void* GetNetUserData_bn(const net_bn* net, int kind) {
    ApiFrame frame("GetNetUserData_bn");
    return frame.run<void*>(nullptr, [&]() -> void* {
        auto& data = checked_net(frame, net).user_data;
        auto it = data.find(kind);
        return it == data.end() ? nullptr : it->second;
    });
}

void SetNetUserData_bn(net_bn* net, int kind, void* data) {
    ApiFrame frame("SetNetUserData_bn");
    frame.run([&] { checked_net(frame, net).user_data[kind] = data; });
}

void AddNetListener_bn(net_bn* net, NetListener_bn callback, void* obj, int filter) {
    ApiFrame frame("AddNetListener_bn");
    frame.run([&] {
        Net* n = nullptr;
        if (net)
            n = &checked_net(frame, net);
        else
            frame.environment(nullptr);
        if (!callback) fail(5213, "NULL passed for the callback function");
        add_net_listener(n, reinterpret_cast<void*>(callback), obj, filter);
    });
}
