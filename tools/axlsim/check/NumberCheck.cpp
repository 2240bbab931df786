// SPDX-License-Identifier: MIT
#include "axlsim/check/NumberCheck.h"

#include "axlsim/base/ValueText.h"

namespace axlsim::configcheck {

std::optional<DriverNumber> checkNumber(DriverCheck& check, std::optional<unsigned> key,
                                        const std::string& where,
                                        const std::map<std::string, std::string>& params,
                                        const std::string& name, const std::string& example) {
    const auto it = params.find(name);
    const DriverNumber number = DriverNumber::read(it != params.end() ? it->second : "");
    if (number.throws()) {
        Finding& finding =
            check.add(Effect::Throws, key, where,
                      it == params.end() ? inQuotes(name) + " is missing"
                                         : inQuotes(name) + " is " + shortInQuotes(it->second) +
                                               ", which the driver cannot read as a number");
        finding.exception = number.exception();
        finding.fix = "write " + inQuotes(name) + " as a decimal number, e.g. " + inQuotes(example);
        return std::nullopt;
    }
    if (!number.readsAsWritten()) {
        const std::string value = std::to_string(number.value());
        Finding& finding = check.add(Effect::Differs, key, where,
                                     inQuotes(name) + " is " + shortInQuotes(number.text()));
        finding.consequence = "reads it as " + value +
                              ": it stops reading at the first character that is not a "
                              "decimal digit";
        finding.fix = "write " + inQuotes(value) + " if " + value +
                      " is meant; the driver reads only whole decimal numbers";
    }
    return number;
}

}  // namespace axlsim::configcheck
