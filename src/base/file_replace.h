// Replacing a file's whole text so that a failed write leaves the file as
// it was: the text goes to a new file beside it, which then takes its place.
#pragma once
#include <string>

namespace ravelo {

// Writes text as the file at path.  file_number is 0 for a file not yet
// written through its stream; a successful write sets it to the number by
// which later failures name the file.  Failures are reported.
void replace_file_text(const std::string& path, const std::string& text, int& file_number);

}  // namespace ravelo
