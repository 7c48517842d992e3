#pragma once

#include "Support/TemporaryFolder.h"

#include <functional>

namespace tallyfoot::testing {

// What the check says when it is run by a user without privileges, to whom the folder with all in it belongs: in
// a child process that gives root's privileges up, or right here where there are none.
bool asOrdinaryUser(const TemporaryFolder& folder, const std::function<bool()>& check);

} // namespace tallyfoot::testing
