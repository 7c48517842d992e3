#pragma once

namespace tallyfoot {

// Whether the process has begun to exit. The other threads run on meanwhile, and in the end the C library empties
// and closes the buffers of all its streams in the middle of their use of them: what has been written or read
// through a stream since the exit began is not to be trusted. Any thread.
class ProcessEnd {
public:
    static void watch() noexcept; // from the first call on; early, since an exit under way is not noticed
    static bool hasBegun() noexcept;
};

} // namespace tallyfoot
