/*
 * The names of the suite's tools.
 */
#include "core/tid.h"

#include <iterator>

static constexpr const char *names[] = {
    "Toll",         "Koblink",      "Pkob",          "Bkob",   "ScribeVBuild??",   "MarshHexConv",
    "TollDebugger", "TollEmulator", "RoutineWalker", "Lumen",  "EasyQuillBuilder", "Platter",
    "Dkob",         "Ferrule",      "Gusset",        "Tappet",
};
static_assert(std::size(names) == 16, "one name for each tool number");

void TID_Initialise() {}

const char *TID_ToolName(int32_t tool)
{
    if (tool < 0 || tool >= static_cast<int32_t>(std::size(names))) return nullptr;
    return names[tool];
}
