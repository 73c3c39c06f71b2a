#pragma once

#include "peer/connection.h"
#include "peer/world.h"

namespace updown::peer {

// Serves one relay request. True if the connection is joined to the service from now on; otherwise
// it is to be closed.
bool ServeRelay(World& world, Connection& connection);

}  // namespace updown::peer
