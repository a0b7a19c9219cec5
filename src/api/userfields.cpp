#include "api/userfields.h"

#include <cstring>

#include "base/failure.h"
#include "net/names.h"

namespace ravelo {
namespace {

void check_kind(int kind) {
    if (kind != 0) fail(5216, "argument 'kind' is %d, but it must be 0 with this version of >-Ravelo", kind);
}

}  // namespace

const char* user_field(const UserFields& fields, const char* name, int* length, int kind) {
    check_kind(kind);
    if (!name) fail(5104, "NULL passed for name");
    const std::string* value = fields.find(name);
    if (!value) return nullptr;
    if (length) *length = static_cast<int>(value->size());
    return value->c_str();
}

void nth_user_field(const UserFields& fields, int index, const char** name, const char** value,
                    int* length, int kind) {
    check_kind(kind);
    if (index < 0) fail(5217, "argument 'index' is negative (%d)", index);
    if (static_cast<size_t>(index) >= fields.fields.size()) {
        if (name) *name = nullptr;
        if (value) *value = nullptr;
        if (length) *length = -1;
        return;
    }
    const auto& [key, text] = fields.fields[static_cast<size_t>(index)];
    if (name) *name = key.c_str();
    if (value) *value = text.c_str();
    if (length) *length = static_cast<int>(text.size());
}

void set_user_field(UserFields& fields, const char* name, const void* data, int length, int kind) {
    check_kind(kind);
    require_legal_name(name, "user field");
    if (length == -1 && !data) {
        fields.remove(name);
        return;
    }
    if (!data) fail(5218, "NULL passed for the user field's data, but its length is %d", length);
    if (length < -1) fail(5219, "argument 'length' is negative (%d)", length);
    const char* bytes = static_cast<const char*>(data);
    fields.set(name, length == -1 ? std::string(bytes) : std::string(bytes, static_cast<size_t>(length)));
}

}  // namespace ravelo
