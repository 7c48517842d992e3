#include "CommandLine/Tool.h"

int main(int count, char** arguments) { return tallyfoot::commandline::runTool(count, arguments); }
