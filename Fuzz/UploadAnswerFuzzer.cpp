// An upload whose server answers with any bytes.
#include "Fuzz/Require.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/PosixRandom.h"
#include "Tallyfoot/Upload/UploadManager.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using namespace tallyfoot;

class SilentConsole final : public Console {
public:
    void write(std::string_view) noexcept override {}
};

// Answers every task at once, with the bytes of the round.
class AnsweringSession final : public URLSession {
public:
    void dataTask(URLRequest, DataTaskCompletion completion) override { completion(answer); }
    std::string answer;
};

struct Host {
    Host() {
        std::string folder = (std::filesystem::temp_directory_path() / "tallyfoot-fuzz-XXXXXX").string();
        fuzzing::require(::mkdtemp(folder.data()) != nullptr, "a temporary folder");
        archive = folder + "/a.zip";
        std::ofstream(archive) << "PK";
        path = folder;
    }
    ~Host() { std::filesystem::remove_all(path); }

    std::filesystem::path path;
    std::string archive;
    PosixFileManager fileManager;
    PosixRandom random;
    SilentConsole console;
    std::atomic<bool> isOn{true};
    std::shared_ptr<AnsweringSession> session = std::make_shared<AnsweringSession>();
    std::shared_ptr<UploadManager> manager = std::make_shared<UploadManager>(
        UploadManager::Collaborators{fileManager, random, DebugConsole(console, isOn), session, [] { return "token"; }},
        "http://127.0.0.1/upload");
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Host host;
    int completions = 0;
    host.session->answer = fuzzing::text(data, size);
    host.manager->upload(host.archive, {}, [&](const UploadManager::Outcome& outcome) {
        ++completions;
        const auto* const results = std::get_if<std::vector<UploadResult>>(&outcome);
        fuzzing::require(results == nullptr || results->size() == 1, "a success is one result");
    });
    fuzzing::require(completions == 1, "every answer completes once");
    fuzzing::require(!host.manager->isUploading("a.zip"), "an answered name is not uploading");
    return 0;
}
