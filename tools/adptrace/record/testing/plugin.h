/* What the program that loads libraries calls in each. */
#pragma once

int run_plugin(int is_again);
