#include "PlatformData/TLSServer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace tallyfoot::testing {

namespace {

// Its standard output goes to `output`, if that is one, and everything else to nowhere.
pid_t spawn(std::vector<std::string> arguments, int output) {
    std::vector<char*> pointers;
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    if (output >= 0)
        ::posix_spawn_file_actions_adddup2(&actions, output, 1);
    else
        ::posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    if (::posix_spawnp(&process, pointers.front(), &actions, nullptr, pointers.data(), environ) != 0) process = -1;
    ::posix_spawn_file_actions_destroy(&actions);
    return process;
}

bool succeeds(std::vector<std::string> arguments) {
    const pid_t process = spawn(std::move(arguments), -1);
    int status = -1;
    return process > 0 && ::waitpid(process, &status, 0) == process && status == 0;
}

// From the line "ACCEPT 127.0.0.1:45123", which comes once the server listens.
std::string portFrom(int output) {
    std::FILE* const lines = ::fdopen(output, "r");
    std::array<char, 256> line{};
    std::string port;
    while (port.empty() && std::fgets(line.data(), line.size(), lines) != nullptr) {
        const std::string text(line.data());
        if (text.starts_with("ACCEPT"))
            port = text.substr(text.rfind(':') + 1, text.find_last_not_of("\n") - text.rfind(':'));
    }
    std::fclose(lines);
    return port;
}

} // namespace

bool TLSServer::isAvailable() { return succeeds({"openssl", "version"}); }

TLSServer::TLSServer(const std::string& name) {
    const auto key = folder_ / "key.pem";
    EXPECT_TRUE(succeeds({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                          "-days", "2", "-subj", "/CN=Tallyfoot test", "-addext", "subjectAltName=" + name, "-keyout",
                          key, "-out", certificatePath()}));
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    process_ = spawn({"openssl", "s_server", "-accept", "127.0.0.1:0", "-www", "-cert", certificatePath(), "-key", key},
                     ends[1]);
    ::close(ends[1]);
    EXPECT_GT(process_, 0);
    port_ = portFrom(ends[0]);
    EXPECT_FALSE(port_.empty());
}

TLSServer::~TLSServer() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
}

} // namespace tallyfoot::testing
