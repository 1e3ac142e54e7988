// The logging library keeps its storage in the one translation unit that initialises it.
#include <easylogging++.h>

INITIALIZE_EASYLOGGINGPP
