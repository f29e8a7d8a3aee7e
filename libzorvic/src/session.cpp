#include <zorvic/session.h>
