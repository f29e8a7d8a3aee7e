#pragma once

// Everything the library offers carries this mark; the rest of the shared object is hidden.
#define ZORVIC_API __attribute__((visibility("default")))
