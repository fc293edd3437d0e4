// Calls of the library's processing functions whose results are known.
#pragma once

#include <string>

namespace vekproc {

// Runs a list: a line for each call, with tabs between the export, the size, the inputs (seed=S amp=A), the other
// arguments by name, the status and the MD5 of what it writes. Names every line that differs, then how many agree.
// Throws std::runtime_error where the list is none.
bool checkKnownAnswers(const std::string& file);

}  // namespace vekproc
