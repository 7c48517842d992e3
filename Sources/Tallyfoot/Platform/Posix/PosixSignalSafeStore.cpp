#include "Tallyfoot/Platform/Posix/PosixSignalSafeStore.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <system_error>

namespace tallyfoot {

namespace {

// Collects small pieces and writes them out. Everything below runs inside a signal handler.
class Output {
public:
    explicit Output(int file) : file_(file) {}

    void add(std::string_view piece) noexcept {
        for (const char byte : piece) {
            if (used_ == buffer_.size()) flush();
            buffer_[used_++] = byte;
        }
        length_ += piece.size();
    }
    std::size_t length() const noexcept { return length_; }
    bool flush() noexcept {
        for (std::size_t done = 0; done < used_ && isGood_;) {
            const auto count = ::write(file_, buffer_.data() + done, used_ - done);
            if (count > 0)
                done += static_cast<std::size_t>(count);
            else
                isGood_ = count < 0 && errno == EINTR;
        }
        used_ = 0;
        return isGood_;
    }

private:
    int file_;
    bool isGood_ = true;
    std::size_t length_ = 0;
    std::size_t used_ = 0; // of the buffer
    std::array<char, 512> buffer_{};
};

// How many bytes at the front make one character that XML allows; 0 when there is none.
std::size_t lengthOfCharacter(std::string_view text) noexcept {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) return lead >= 0x20 || lead == '\t' || lead == '\n' ? 1 : 0;
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || text.size() < length) return 0;
    std::uint32_t scalar = lead & (0x7FU >> length);
    for (std::size_t index = 1; index < length; ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        if ((byte & 0xC0U) != 0x80) return 0;
        scalar = scalar << 6U | (byte & 0x3FU);
    }
    constexpr std::array<std::uint32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = scalar >= 0xD800 && scalar < 0xE000;
    const bool isAllowed =
        scalar >= least[length] && scalar <= 0x10FFFF && !isSurrogate && (scalar & 0xFFFEU) != 0xFFFE;
    return isAllowed ? length : 0;
}

// A list that is too large would never be read again.
constexpr std::size_t mostOfText = PosixPropertyLists::maximumSize / 8;

void addEscaped(Output& output, std::string_view text) noexcept {
    for (const auto end = output.length() + mostOfText; !text.empty() && output.length() < end;) {
        const auto length = lengthOfCharacter(text);
        switch (text.front()) {
        case '\r': output.add("&#13;"); break; // bare, it would read as a line feed elsewhere
        case '&': output.add("&amp;"); break;
        case '<': output.add("&lt;"); break;
        case '>': output.add("&gt;"); break;
        default: output.add(length == 0 ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length));
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
}

bool write(int file, std::span<const SignalSafeStore::Text> texts) noexcept {
    Output output(file);
    output.add("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n<dict>\n");
    for (const auto& [key, value] : texts) {
        output.add("<key>");
        addEscaped(output, key);
        output.add("</key><string>");
        addEscaped(output, value);
        output.add("</string>\n");
    }
    output.add("</dict>\n</plist>\n");
    return output.flush();
}

constexpr std::string_view hiddenHead = ".value.";
constexpr std::size_t digitsOfHidden = 10;
constexpr std::string_view hiddenTail = ".new";

// Its writer's number is yet to come.
std::string hiddenIn(const std::string& folder) {
    auto path = folder + "/";
    return path.append(hiddenHead).append(digitsOfHidden, '0').append(hiddenTail);
}

std::optional<pid_t> writerOf(std::string_view name) {
    if (name.size() != hiddenHead.size() + digitsOfHidden + hiddenTail.size()) return std::nullopt;
    if (!name.starts_with(hiddenHead) || !name.ends_with(hiddenTail)) return std::nullopt;
    const auto digits = name.substr(hiddenHead.size(), digitsOfHidden);
    pid_t writer = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), writer);
    return read.ec == std::errc() && read.ptr == digits.data() + digits.size() ? std::optional(writer) : std::nullopt;
}

// What processes have left that were killed inside a hook. One that lives may be in the middle of its own.
void removeLeftovers(const std::string& folder) {
    const auto names = PosixFileManager().contentsOfDirectory(folder);
    if (!names) return;
    const auto place = folder + "/";
    for (const auto& name : names.value())
        if (const auto writer = writerOf(name); writer && ::kill(*writer, 0) != 0 && errno == ESRCH)
            (void)::unlink((place + name).c_str());
}

// The folder and all that it lies in, outermost first.
std::vector<std::string> wayTo(const std::string& folder) {
    std::vector<std::string> folders;
    for (auto end = folder.find('/', 1); end != std::string::npos; end = folder.find('/', end + 1))
        folders.push_back(folder.substr(0, end));
    folders.push_back(folder);
    return folders;
}

} // namespace

PosixSignalSafeStore::PosixSignalSafeStore(const std::string& folder, std::string path, std::string key,
                                           const std::atomic<NumberTable*>& numbers)
    : folders_(wayTo(folder)), hidden_(hiddenIn(folder)), path_(std::move(path)), key_(std::move(key)),
      numbers_(numbers), spare_(::open("/dev/null", O_RDONLY | O_CLOEXEC)) {
    removeLeftovers(folder);
}

// A process that was forked since has this store too, and must not write into the same file.
void PosixSignalSafeStore::nameHidden() noexcept {
    auto digit = hidden_.size() - hiddenTail.size();
    for (auto rest = ::getpid(); rest > 0; rest /= 10) hidden_[--digit] = static_cast<char>('0' + rest % 10);
}

FileDescriptor PosixSignalSafeStore::open() noexcept {
    const auto once = [this] {
        return FileDescriptor(::open(hidden_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    };
    auto file = once();
    if (!file && (errno == EMFILE || errno == ENFILE)) {
        // With descriptors of its own first: other threads may be waiting for one to come free.
        ::syscall(SYS_unshare, CLONE_FILES);
        spare_ = FileDescriptor();
        file = once();
    }
    if (!file && errno == ENOENT) { // somebody removed it
        for (const auto& folder : folders_) ::mkdir(folder.c_str(), 0700);
        file = once();
    }
    return file;
}

bool PosixSignalSafeStore::store(std::span<const Text> texts) noexcept {
    const int kept = errno;
    nameHidden();
    auto file = open();
    const bool isOpen = bool(file);
    bool isStored = isOpen && write(file.number(), texts);
    file = FileDescriptor();
    isStored = isStored && std::rename(hidden_.c_str(), path_.c_str()) == 0;
    if (!isStored && isOpen) ::unlink(hidden_.c_str());

    auto* numbers = numbers_.load(std::memory_order_acquire);
    if (isStored && numbers != nullptr && numbers->isWritable())
        if (auto* slot = numbers->find(key_); slot != nullptr && slot->number()) slot->clear();
    errno = kept;
    return isStored;
}

} // namespace tallyfoot
