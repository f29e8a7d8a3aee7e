#include "text/displaynames.h"

const std::unordered_map<Zorvic::UnitRole, std::string> RoleNames = {
    {Zorvic::ZORVIC_ROLE_INVALID, "<INVALID>"},
    {Zorvic::ZORVIC_ROLE_SINGLE, "Single"},
    {Zorvic::ZORVIC_ROLE_PRIMARY, "Primary"},
    {Zorvic::ZORVIC_ROLE_MIRROR, "Mirror"},
};

const std::unordered_map<Zorvic::UnitType, std::string> UnitNames = {
    {Zorvic::ZORVIC_UTYPE_INVALID, "<INVALID>"},
    {Zorvic::ZORVIC_UTYPE_SERVER_T4X, "Server T4X"},
    {Zorvic::ZORVIC_UTYPE_SERVER_M20X, "Server M20X"},
    {Zorvic::ZORVIC_UTYPE_LUMEN, "Lumen"},
};
