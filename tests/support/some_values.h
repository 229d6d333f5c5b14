// Calls an operation of the RPC interface with default values of its parameters' types.
#pragma once

#include <type_traits>

#include "browserdvbservice_interfaces.h"

template <typename Interface, typename... Parameters>
int callWithSomeValues(Interface& target,
                       int (Interface::*operation)(frame::MsgIds&, const frame::TransportInfo&, Parameters...),
                       frame::MsgIds& ids) {
    return (target.*operation)(ids, {}, std::decay_t<Parameters>()...);
}

template <typename Interface, typename... Parameters>
int callWithSomeValues(Interface& target,
                       int (Interface::*operation)(frame::MsgIds&, const frame::TransportInfo&, Parameters...)) {
    frame::MsgIds ids;
    return callWithSomeValues(target, operation, ids);
}
