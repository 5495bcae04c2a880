#pragma once

#include "tools/Json.h"

#include <ostream>
#include <string>
#include <string_view>

namespace subsysctl {

// What the user sees: one line for each thing, written out at once, as JSON or for a person.
class Output {
public:
    Output(std::ostream& out, bool json, bool colour) : mOut(out), mJson(json), mColour(colour) {}

    // A response, an indication, a callback's call, or a status: the first key says which.
    void print(const Json& event);
    // Lines of "key: value": as they are, or as one object.
    void printState(const std::string& lines);
    // False once nobody reads.
    [[nodiscard]] bool isOpen() const { return mOut.good(); }

private:
    std::string lineFor(const Json& event) const;
    std::string paint(std::string_view text, std::string_view code) const;
    std::string outcome(const Json& event) const;

    std::ostream& mOut;
    const bool mJson;
    const bool mColour;
};

// `a=1 b={c=2} d=["x"]`, texts quoted.
[[nodiscard]] std::string describe(const Json& object);

}  // namespace subsysctl
