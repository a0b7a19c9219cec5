// Storage for the large flat tables of a junction tree.
#pragma once
#include <cstddef>
#include <vector>

namespace ravelo {

// Gives the table n entries of value.  Large tables ask the system for huge
// pages: touching a gigabyte of fresh memory one small page at a time costs
// seconds on some machines, and the walks over it miss the address cache less.
void fill_table(std::vector<float>& table, std::size_t n, float value);
void fill_table(std::vector<double>& table, std::size_t n, double value);
// The table becomes a copy of source, with the same care.
void copy_table(std::vector<float>& table, const std::vector<float>& source);

}  // namespace ravelo
