#pragma once

#include "platform/IDriver.h"

namespace korvel::replay {

// Makes a small driver for tests of the tool itself: its commands exercise the services, its entries say what
// they were given.
IDriver* CreateTestDriver(IInstanceManager& instances);
// Makes none.
IDriver* CreateNoDriver(IInstanceManager& instances);
// Throws.
IDriver* CreateBrokenDriver(IInstanceManager& instances);

} // namespace korvel::replay
