// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>

#include "HostRecords.h"

class CSI_base;

namespace axlsim {

// The driver library, loaded with dlopen the way the host runtime loads it, and used only
// through its factory CreateSiObject and the CSI_base interface of what it returns.
class DriverLibrary {
public:
    // Throws std::runtime_error when the library cannot be loaded or has no factory.
    explicit DriverLibrary(const std::string& path);

    CSI_base* createSiObject(const stSP_Params_t& params,
                             std::map<unsigned, stMappingElem_t>* mappings,
                             std::map<unsigned, stServiceParams_t>* services) const;

    const std::string& path() const { return path_; }

    // Where a built or installed axlsim finds the driver: ../lib beside the program, else the
    // program's own directory.
    static std::string besideProgram();

private:
    using Factory = CSI_base* (*)(stSP_Params_t, std::map<unsigned, stMappingElem_t>*,
                                  std::map<unsigned, stServiceParams_t>*);

    std::string path_;
    Factory factory_ = nullptr;
};

}  // namespace axlsim
