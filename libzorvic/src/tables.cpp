#include <zorvic/tables.h>

const std::map<Zorvic::ResolutionMode, std::string> ResolutionMap = {
    {Zorvic::ZORVIC_RES_INVALID, "Off"}, {Zorvic::ZORVIC_RES_720P, "720p"},   {Zorvic::ZORVIC_RES_1080P, "1080p"},
    {Zorvic::ZORVIC_RES_2160P, "2160p"}, {Zorvic::ZORVIC_RES_1080I, "1080i"},
};

const std::map<Zorvic::RefreshMode, std::string> RefreshMap = {
    {Zorvic::ZORVIC_REFRESH_INVALID, "0"}, {Zorvic::ZORVIC_REFRESH_23_98, "23.98"}, {Zorvic::ZORVIC_REFRESH_24, "24"},
    {Zorvic::ZORVIC_REFRESH_25, "25"},     {Zorvic::ZORVIC_REFRESH_29_97, "29.97"}, {Zorvic::ZORVIC_REFRESH_30, "30"},
    {Zorvic::ZORVIC_REFRESH_50, "50"},     {Zorvic::ZORVIC_REFRESH_59_94, "59.94"}, {Zorvic::ZORVIC_REFRESH_60, "60"},
};

const std::map<Zorvic::ResolutionMode, Zorvic::Size2D> ResolutionSizeMap = {
    {Zorvic::ZORVIC_RES_720P, {1280, 720}},
    {Zorvic::ZORVIC_RES_1080P, {1920, 1080}},
    {Zorvic::ZORVIC_RES_2160P, {3840, 2160}},
    {Zorvic::ZORVIC_RES_1080I, {1920, 1080}},
};
