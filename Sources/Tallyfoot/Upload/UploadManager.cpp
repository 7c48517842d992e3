#include "Tallyfoot/Upload/UploadManager.h"

#include "Tallyfoot/Events/JSON.h"
#include "Tallyfoot/Events/Text.h"
#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Upload/Dump.h"
#include "Tallyfoot/Upload/MultipartRequest.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace tallyfoot {

namespace {

std::string lastComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    return std::string(path.substr(path.rfind('/') + 1));
}

// The object under the key of an object; nullptr when there is none.
const nlohmann::json* objectMember(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() || !found->is_object() ? nullptr : &*found;
}

} // namespace

UploadManager::UploadManager(Collaborators collaborators, std::optional<std::string> uploadPath)
    : collaborators_(std::move(collaborators)), uploadPath_(std::move(uploadPath)) {}

void UploadManager::upload(const std::string& archivePath, const Parameters& parameters, Completion completion) {
    const auto& console = collaborators_.console;
    std::string fileName = lastComponent(archivePath);
    uploadsInProgress_.modify([&](auto& names) { names.insert(fileName); });

    auto data = collaborators_.fileManager.contents(archivePath);
    if (!data) {
        forget(fileName);
        reportFailure(fileName, data.error());
        return completion(UploadError{UploadError::Kind::invalidData, data.error().description});
    }
    auto request = multipartRequest(uploadPath_.value_or(std::string()), parameters, boundary(collaborators_.random),
                                    std::move(data).value(), "files", "*/*", fileName);
    if (!request) {
        console.print("Error while creating multipart request");
        return completion(UploadError{UploadError::Kind::invalidUploadPath, {}});
    }
    if (!collaborators_.authenticationToken) fatalError("An upload needs an authentication");
    request->headers.emplace_back("cookie", collaborators_.authenticationToken());

    console.print({"Request is ", request->url});
    console.print("-----------");
    console.dump(dumpText(*request));
    console.print({"Started uploading file: ", fileName});
    collaborators_.urlSession->dataTask(std::move(*request),
                                        [weakSelf = weak_from_this(), name = std::move(fileName),
                                         completion = std::move(completion)](const Result<std::string>& answer) {
                                            const auto self = weakSelf.lock();
                                            if (!self) return;
                                            self->forget(name);
                                            completion(self->outcome(name, answer));
                                        });
}

bool UploadManager::isUploading(std::string_view fileName) const {
    return uploadsInProgress_.read([&](const auto& names) { return names.contains(fileName); });
}

void UploadManager::forget(const std::string& fileName) {
    uploadsInProgress_.modify([&](auto& names) { names.erase(fileName); });
}

void UploadManager::reportFailure(std::string_view fileName, const Error& error) const {
    collaborators_.console.print({"Failed to upload file: ", fileName, " with error: ", error.description});
}

UploadManager::Outcome UploadManager::outcome(std::string_view fileName, const Result<std::string>& answer) const {
    const auto& console = collaborators_.console;
    if (!answer) {
        reportFailure(fileName, answer.error());
        return UploadError{UploadError::Kind::error, answer.error().description};
    }
    const std::string& body = answer.value();
    if (body.empty()) {
        console.print("Invalid response data");
        return UploadError{UploadError::Kind::invalidData, {}};
    }
    console.print({"Completed uploading file: ", fileName});
    if (console.isOn()) console.print({"Request response: ", text::utf8String(body)});
    return decode(body);
}

UploadManager::Outcome UploadManager::decode(std::string_view body) const {
    const auto answer = json::dictionary(body);
    const auto* const data = answer ? objectMember(*answer, "data") : nullptr;
    const auto* const response = data != nullptr ? objectMember(*data, "response") : nullptr;
    if (response == nullptr) return UploadError{UploadError::Kind::invalidResponse, {}};

    auto result = decodeUploadResult(*response);
    if (!result) return UploadError{UploadError::Kind::error, result.error().description};
    collaborators_.console.dump(dumpText(result.value()));
    return std::vector{std::move(result).value()};
}

} // namespace tallyfoot
