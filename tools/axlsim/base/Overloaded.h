// SPDX-License-Identifier: MIT
#pragma once

namespace axlsim {

// Lambdas joined into one visitor for std::visit.
template <class... Ts>
struct Overloaded : Ts... {
    using Ts::operator()...;
};

template <class... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

}  // namespace axlsim
