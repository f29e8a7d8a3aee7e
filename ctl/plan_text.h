#pragma once

#include "printing.h"
#include "restore_plan.h"

namespace ZorvicCtl {

void PrintPlan(const RestorePlan& plan, const Backup& wanted, const Backup& unit);
Json ToJson(const RestorePlan& plan, bool applied);

}  // namespace ZorvicCtl
