// The consumer once more, as a C++ program.
#include "../consumer.c"
