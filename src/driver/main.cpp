#include "driver/startup.h"

int main(int argc, char** argv) { return runTolva(argc, argv); }
