#include <zorvic/discovery.h>
