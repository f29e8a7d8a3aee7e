#include <zorvic/layout.h>
