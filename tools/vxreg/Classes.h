#pragma once

#include <map>
#include <string>
#include <vector>

namespace vxreg {

/// The classes of component libraries that are registered.
struct Classes {
    std::map<std::string, std::string> libraryOf; ///< by class
    std::map<std::string, std::string> classOf; ///< by name
    std::map<std::string, std::vector<std::string>> namesOf; ///< as the class has them; by class
};

/// What the registry has. What cannot be read is left out.
Classes readClasses();

/// Whether two paths are of one library.
bool isSameFile(const std::string& path, const std::string& other);

/// The default value of a key of the classes, empty if there is none.
std::string textOfClassKey(const std::string& key);

} // namespace vxreg
