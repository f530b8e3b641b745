// Messages of failed driver calls.
#include "stg/report.h"

#include <stdio.h>

namespace adp {

int32_t report(const FailurePoint &point, int32_t result) {
    // The formats are constants; as members of a point they are no literals to the compiler.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    printf(point.format, point.function, point.line, result);
#pragma GCC diagnostic pop
    return result;
}

}  // namespace adp
