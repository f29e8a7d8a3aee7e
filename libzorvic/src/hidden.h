#pragma once

// A class inside of one that is offered would be let out with it.
#define ZORVIC_HIDDEN __attribute__((visibility("hidden")))
