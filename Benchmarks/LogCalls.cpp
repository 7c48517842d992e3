// Logs as many events as its argument says: the difference between two runs is what an event asks of the system.
#include "Support/Workload.h"

#include <cstdlib>

int main(int argc, char** argv) {
    tallyfoot::benchmarks::startRecording("http://127.0.0.1:9/upload");
    const long events = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    for (long event = 0; event < events; ++event) tallyfoot::benchmarks::logOne();
    return 0;
}
