// Case sets: the case files from which learning and testing take their cases.
#pragma once
#include <string>
#include <vector>

#include "base/environment.h"
#include "base/tags.h"
#include "io/case_table.h"

namespace ravelo {

class Stream;

class CaseSet : public Tagged {
public:
    CaseSet(Environment* owner, std::string set_name)
        : Tagged(kCaseSetType), env(owner), name(std::move(set_name)) {}

    struct File {
        const Stream* stream;  // the caller's file specification
        double degree;         // multiplies the weight of each of its cases
    };
    Environment* env;
    std::string name;
    std::vector<File> files;  // at most one
};

// Reads every case of the case set for net, once, into memory (each case's
// weight already multiplied by its file's degree).  Faults of single rows are
// reported as the reader does and the row is left out; a fault that ends the
// reading fails with its report.
CaseTable load_caseset(const CaseSet& cases, Net& net);

}  // namespace ravelo
