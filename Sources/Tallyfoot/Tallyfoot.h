#pragma once

// All that a host includes.
#include "Tallyfoot/Facade/Tallyfoot.h"
