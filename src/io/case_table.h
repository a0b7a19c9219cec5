// Cases held in memory: every case of a case file, read once, with its
// multiplicity, as learning, testing and simulation take them.  A table is
// made for one net and names its columns by the nodes' positions in that
// net's order, so the same table also feeds copies of the net (one per
// worker thread).
#pragma once
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

class Stream;

struct CaseTable {
    // The position (in net order) of the node each column names; columns the
    // net does not know are not kept.
    std::vector<int> columns;
    // Per case: weight (its NumCases multiplicity times the degree it was
    // read with), IDnum (-1 when none) and the file line it came from.
    std::vector<double> weights;
    std::vector<long> ids;
    std::vector<long> lines;
    // Per cell, case-major (cell = case * columns.size() + column): the state,
    // kUndefState when missing or when only a real value is known.
    std::vector<int> states;
    // Per cell, the real value (UNDEF when none); empty when no column has one.
    std::vector<double> values;
    // The rare cells whose entry was a non-simple finding (likelihood,
    // interval, negated state), by cell index.
    std::map<std::size_t, FindingRecord> nonsimple;
    std::string file_name;

    std::size_t num_cases() const { return weights.size(); }
    std::size_t cell(std::size_t c, std::size_t column) const { return c * columns.size() + column; }
    double value(std::size_t c, std::size_t column) const {
        return values.empty() ? undefined_real() : values[cell(c, column)];
    }
    static double undefined_real();
};

// Replaces the findings of the table's column nodes in net (the net the table
// was read for, or a copy of it) with case c's entries.  Nodes whose entry
// is missing are left without findings; columns whose node is marked in
// 'skip' (by net position, when given) are left alone.  Findings are entered
// without testing them against the model: an impossible case shows as a
// probability of zero when the net is updated.
void enter_case(const CaseTable& cases, std::size_t c, Net& net,
                const std::vector<char>* skip = nullptr);

// Reads every case of a case file for net, each case's weight multiplied by
// degree.  A faulty row is reported and left out as the reader's rules say;
// a fault that ends the reading (or a halt) fails with its report.
CaseTable read_case_file(const Stream& file, Net& net, double degree);

}  // namespace ravelo
