// PresentProgrammes: the present and the following programme of the presented service.
// Threads: one.
// Blocks:  never.
// Fails:   bad sections are left out.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "programme.h"

namespace tvbrowser {

class PresentProgrammes {
public:
    /// Another service is presented.
    void clear(const std::optional<si::Triplet>& newService);
    /// A section of EIT present/following. Whether that changes the value.
    bool add(si::Bytes section, std::string& error);
    /// Present, then following; as far as they are known.
    const json& value() const { return list; }
    /// The same as tables, present first.
    const std::array<std::optional<si::Eit>, 2>& sections() const { return bySection; }

private:
    bool isOfService(const si::Eit& eit) const;

    std::optional<si::Triplet> service;
    std::array<std::optional<si::Eit>, 2> bySection;
    json list = json::array();
};

}  // namespace tvbrowser
