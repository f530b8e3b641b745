// Reads a recording: to be written.
#include "tools/adptrace/recording/recording.h"
