#pragma once

namespace tallyfoot {

// The TLS library frees what it needs when the process ends, while the library's own thread may be
// in the middle of using it. A thread passes the gate around every call that may reach TLS; when
// the process ends the gate closes first, and whoever comes to it afterwards stays there.
class ExitGate {
public:
    // Once, after the TLS library was set up, so that the gate closes before it is torn down.
    static void install();

    // For a thread that comes to its end: it stays inside until what TLS keeps for a thread has been
    // released with the thread.
    static void passUntilThreadEnds();

    // Never held while anybody else's code runs.
    class Pass {
    public:
        Pass();
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
    };
};

} // namespace tallyfoot
