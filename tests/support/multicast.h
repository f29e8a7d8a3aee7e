#pragma once

#include <string>

/// Why DNS-SD cannot work on lo on this machine, or nothing when it can.
std::string WhyNoMulticastOnLoopback();
