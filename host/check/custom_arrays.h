// Arrays of "custom" in more than one device: the library reads them as one walk.
#pragma once

#include <vector>

#include "check/findings.h"

namespace runhost {

// A warning at each such array behind the first device that has one.
std::vector<Fault> findMeetingArrays(Node& root);

}  // namespace runhost
