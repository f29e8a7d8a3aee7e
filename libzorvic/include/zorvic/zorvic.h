#pragma once

// The unit control library in one include.

#include "zorvic/discovery.h"
#include "zorvic/enums.h"
#include "zorvic/layout.h"
#include "zorvic/session.h"
#include "zorvic/tables.h"
#include "zorvic/types.h"
