// Deliberate faults, so that a caller can check that the engine recovers.
// Faults that would corrupt or hang the process are stood in for by the
// checks that catch them: the access, division, recursion, buffer or loop
// guard detects the fault just before it would happen and raises it as a
// system fault, which the checking frame turns into a report.
#pragma once

namespace ravelo {

// 1 when test_num names a fault, 0 for other numbers below 30, 3 from 30 up.
int fault_test_kind(int test_num);

// Provokes fault test_num (one that fault_test_kind calls 1).  Faults the
// engine's floating-point state masks (3, 14) complete without a report.
void provoke_fault(int test_num);

}  // namespace ravelo
