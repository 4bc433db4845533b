// Several lambdas as one function, each for the types that it takes: for std::visit.
#pragma once

namespace vantrel::platform {

template <typename... Ts>
struct Overloaded : Ts... {
    using Ts::operator()...;
};
template <typename... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

}  // namespace vantrel::platform
