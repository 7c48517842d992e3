#include "CommandLine/LineOutput.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tallyfoot::commandline {

void LineOutput::line(std::string_view text) {
    constexpr std::size_t piece = 1U << 16U;
    if (!isOpen()) return;
    buffer_ += text;
    buffer_ += '\n';
    if (buffer_.size() >= piece) flush();
}

void LineOutput::flush() {
    std::string_view rest = buffer_;
    while (!rest.empty() && isOpen()) {
        const auto count = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
    buffer_.clear();
}

bool LineOutput::readerLeft() const { return error_ == EPIPE; }

std::string LineOutput::failure() const { return std::strerror(error_); }

} // namespace tallyfoot::commandline
