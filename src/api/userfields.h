// User fields of nets and nodes as the interface hands them out.
#pragma once
#include "net/model.h"

namespace ravelo {

// kind must be 0 (the only kind of user field there is).
const char* user_field(const UserFields& fields, const char* name, int* length, int kind);
void nth_user_field(const UserFields& fields, int index, const char** name, const char** value,
                    int* length, int kind);
// length -1 with data NULL removes the field; length -1 otherwise takes data as text.
void set_user_field(UserFields& fields, const char* name, const void* data, int length, int kind);

}  // namespace ravelo
