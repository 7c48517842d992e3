#include "TestUpload.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace tallyfoot::testing {

namespace {

constexpr const char* crlf = "\r\n";

int connectTo(int port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    const timeval patience{30, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const int yes = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes); // each piece goes out by itself
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
}

std::size_t contentLength(const std::string& head) {
    constexpr std::string_view name = "Content-Length: ";
    const auto position = head.find(name);
    return position == std::string::npos ? 0 : std::stoul(head.substr(position + name.size()));
}

} // namespace

TestUpload::TestUpload() : TestUpload({{"07-03-2024T14-05-09-001.log", log({record("id-1")})}}) {}

TestUpload::TestUpload(const Entries& logs) : file(archive(logs)) {
    fields = {{"appName", "Shop"},        {"appid", "shop-1"},
              {"bizarea", "Retail"},      {"bizareaid", "R-7"},
              {"userId", "user-1"},       {"authtoken", "token-1"},
              {"delimeter", "jsonsplit"}, {"userAgent", "x86_64/iOS/6.1.0//"},
              {"deviceScrnDim", "0-0"},   {"userIpAddress", ""}};
}

void TestUpload::setField(const std::string& name, const std::string& value) {
    for (auto& field : fields) {
        if (field.first == name) field.second = value;
    }
}

void TestUpload::removeField(const std::string& name) {
    std::erase_if(fields, [&](const auto& field) { return field.first == name; });
}

std::string TestUpload::body() const {
    std::string text;
    for (const auto& [name, value] : fields) {
        text += "--" + boundary + crlf + "Content-Disposition: form-data; name=\"" + name + "\"" + crlf + crlf + value
                + crlf;
    }
    text += "--" + boundary + crlf;
    text += fileHeaders.empty() ? "Content-Disposition: form-data; name=\"files\"; filename=\"" + filename + "\"" + crlf
                                      + "Content-Type: application/zip" + crlf
                                : fileHeaders;
    return text + crlf + file + crlf + "--" + boundary + "--";
}

std::string TestUpload::head(std::size_t bodySize) const {
    const auto type = contentType.empty() ? "multipart/form-data; boundary=" + boundary : contentType;
    return "POST " + target + " HTTP/1.1" + crlf + "Host: 127.0.0.1" + crlf + "Content-Type: " + type + crlf
           + "cookie: " + cookie + crlf + extraHeaders + "Content-Length: " + std::to_string(bodySize) + crlf + crlf;
}

collector::CheckedUpload checked(const TestUpload& upload) {
    const auto body = upload.body();
    return collector::checkUpload(upload.head(body.size()), body);
}

std::string archive(const TestUpload::Entries& entries, bool compressed) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* buffer = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(buffer);
    zip_t* zip = zip_open_from_source(buffer, ZIP_TRUNCATE, &error);
    for (const auto& [name, bytes] : entries) {
        zip_source_t* source = zip_source_buffer(zip, bytes.data(), bytes.size(), 0);
        const auto index = zip_file_add(zip, name.c_str(), source, ZIP_FL_ENC_UTF_8);
        EXPECT_GE(index, 0) << zip_strerror(zip);
        zip_set_file_compression(zip, static_cast<zip_uint64_t>(index), compressed ? ZIP_CM_DEFLATE : ZIP_CM_STORE, 0);
    }
    EXPECT_EQ(zip_close(zip), 0);
    std::string result;
    zip_source_open(buffer);
    std::array<char, 4096> chunk{};
    for (zip_int64_t count = 0; (count = zip_source_read(buffer, chunk.data(), chunk.size())) > 0;) {
        result.append(chunk.data(), static_cast<std::size_t>(count));
    }
    zip_source_close(buffer);
    zip_source_free(buffer);
    zip_error_fini(&error);
    return result;
}

std::string recordOf(const nlohmann::ordered_json& members) {
    std::string text = "{";
    for (const auto& [name, value] : members.items()) {
        text += (text.size() > 1 ? ",\n  " : "\n  ") + nlohmann::json(name).dump() + " : " + value.dump();
    }
    return text + "\n}";
}

std::string record(const std::string& evtId, const std::string& evtType) {
    return recordOf({{"evtId", evtId}, {"evtType", evtType}, {"pgName", "Home"}});
}

std::string log(const std::vector<std::string>& records) {
    std::string text;
    for (const auto& each : records) text += each + "jsonsplit";
    return text;
}

nlohmann::json Exchange::response() const {
    const auto parsed = nlohmann::json::parse(body, nullptr, false);
    EXPECT_FALSE(parsed.is_discarded()) << body;
    return parsed.at("data").at("response");
}

namespace {

void sendAll(int socket, const std::string& bytes, std::size_t pieceSize) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const auto count = ::send(socket, bytes.data() + sent, std::min(bytes.size() - sent, pieceSize), MSG_NOSIGNAL);
        if (count < 0) break;
        sent += static_cast<std::size_t>(count);
    }
}

Exchange talk(int port, const std::string& bytes, bool endsAfterwards, std::size_t pieceSize) {
    const int socket = connectTo(port);
    sendAll(socket, bytes, pieceSize);
    if (endsAfterwards) ::shutdown(socket, SHUT_WR);
    Exchange result;
    std::string reply;
    std::array<char, 65536> buffer{};
    for (;;) {
        const auto count = ::recv(socket, buffer.data(), buffer.size(), 0);
        if (count < 0) result.end = errno == ECONNRESET ? Exchange::End::reset : Exchange::End::closed;
        if (count <= 0) break;
        reply.append(buffer.data(), static_cast<std::size_t>(count));
        const auto headEnd = reply.find("\r\n\r\n");
        if (headEnd == std::string::npos) continue;
        result.body = reply.substr(headEnd + 4);
        if (result.body.size() < contentLength(reply.substr(0, headEnd))) continue;
        result.end = Exchange::End::answered;
        result.status = std::stoi(reply.substr(reply.find(' ') + 1, 3));
        break;
    }
    ::close(socket);
    return result;
}

} // namespace

Exchange talk(int port, const std::string& bytes) { return talk(port, bytes, false, bytes.size()); }

Exchange talkHalf(int port, const std::string& bytes) { return talk(port, bytes, true, bytes.size()); }

Exchange talkInPieces(int port, const std::string& bytes, std::size_t pieceSize) {
    return talk(port, bytes, false, pieceSize);
}

SilentClient::SilentClient(int port, const std::string& said) : socket_(connectTo(port)) {
    sendAll(socket_, said, said.size());
}

SilentClient::~SilentClient() { ::close(socket_); }

Exchange send(int port, const TestUpload& upload) {
    const auto body = upload.body();
    return talk(port, upload.head(body.size()) + body);
}

} // namespace tallyfoot::testing
