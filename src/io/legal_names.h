// Turning foreign names into legal, unique ones, and finding the foreign
// name again from the title that keeps it.
#pragma once
#include <set>
#include <string>

namespace ravelo {

class UniqueNames {
public:
    // A legal name for the original text, different from every one given before.
    std::string legal(const std::string& original);

private:
    std::set<std::string> used_;
};

// The name to write in a foreign file: the title when reading kept the
// original there (its repair gives the name), otherwise the name itself.
std::string foreign_name(const std::string& name, const std::string& title);

}  // namespace ravelo
