#pragma once

#include <stdexcept>

namespace tb {

// Thrown by Beacon::startWithConfig for a configuration it cannot work with. The caller catches
// them; the client then stays unstarted and drops what it is given.
class BeaconAppKeyNotSetException final : public std::runtime_error {
public:
    BeaconAppKeyNotSetException() : std::runtime_error("appKey property on BeaconConfig object is not set") {}
};

class BeaconHostNotSetException final : public std::runtime_error {
public:
    BeaconHostNotSetException() : std::runtime_error("host property on BeaconConfig object is not set") {}
};

} // namespace tb
