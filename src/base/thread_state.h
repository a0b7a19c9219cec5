// Per-thread state of the interface: the function the thread is executing.
#pragma once
#include <string>

namespace ravelo {

// Empty when the thread is outside the interface; "Callback of %s: ..." while
// a listener callback runs.
std::string& current_function_text();
bool is_callback_marker(const std::string& text);

}  // namespace ravelo
