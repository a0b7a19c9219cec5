#include "learn/caseset.h"

#include "base/failure.h"
#include "base/stream.h"
#include "io/case_file.h"

namespace ravelo {

CaseTable load_caseset(const CaseSet& cases, Net& net) {
    if (cases.files.empty()) return CaseTable();
    const CaseSet::File& file = cases.files.front();
    if (file.stream->is_dead())
        fail(2663, "the file of >-caseset_cs '%s' was deleted before its cases were read", cases.name.c_str());
    return read_case_file(*file.stream, net, file.degree);
}

}  // namespace ravelo
