#pragma once

#include <string>
#include <vector>

#include "app/launch_identity.h"

namespace updown {

// Gives the task list and the cache of headers that an earlier version has kept under one of
// `earlier` today's name, each where none stands under it. The first name that has one counts. A
// cache under a lossy name stays, since other identities' headers may lie in it. Before the list is
// loaded and the cache is made.
void TakeOverEarlierData(const std::string& identityHash, const std::vector<EarlierName>& earlier);

}  // namespace updown
