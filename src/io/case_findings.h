// Findings other than one known state or value, as case-file entries:
//   ~s          not state s          (s: a state name, "#n", or a number)
//   (s, t)      one of these states  ~(s, t): none of them
//   {p, q, ..}  a likelihood vector, one weight in [0, 1] per state
//   [lo, hi]    a value in the interval (nodes with levels)
//   <x <=x >x >=x   a value above or below x (nodes with levels)
// The written form of a likelihood finding is its vector, which reads back
// to the same finding.
#pragma once
#include <string>
#include <string_view>

#include "net/model.h"

namespace ravelo {

// Reads an entry in the forms above into a likelihood finding; false with
// the fault (a sentence without the place) when it cannot be read.
bool read_case_finding(const Node& node, std::string_view text, FindingRecord& finding,
                       std::string& fault);

// Appends the entry that stands for the node's current findings (nothing
// when it has none).
void append_case_entry(const Node& node, std::string& out);

}  // namespace ravelo
