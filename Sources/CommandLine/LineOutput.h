#pragma once

#include <string>
#include <string_view>

namespace tallyfoot::commandline {

// Lines for standard output, written in large pieces. Once a write has failed the rest is dropped.
class LineOutput {
public:
    void line(std::string_view text);
    void flush();

    bool isOpen() const { return error_ == 0; }
    bool readerLeft() const;     // as `head` does: no reason to complain
    std::string failure() const; // why it is not open

private:
    std::string buffer_;
    int error_ = 0;
};

} // namespace tallyfoot::commandline
