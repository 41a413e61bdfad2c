// vorn-speaker: a simulated speaker that plays scenarios and prints every call that crosses the library.
#include "Program.h"

int main(int argc, char** argv) { return vorn_speaker::program(argc, argv); }
