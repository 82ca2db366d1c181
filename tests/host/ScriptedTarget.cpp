// A scripted target, see ScriptedTarget.h.
#include "ScriptedTarget.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

Pdu ScriptedConnection::receive()
{
    const auto fill = [this](std::vector<SD_UINT8> &bytes) {
        const auto size = static_cast<ssize_t>(bytes.size());
        if (size != 0 && recv(socket_, bytes.data(), bytes.size(), MSG_WAITALL) != size) {
            throw std::runtime_error("closed");
        }
    };
    Pdu pdu;
    fill(pdu.header);
    const std::size_t length = static_cast<std::size_t>(pdu.header[5] << 16 | pdu.header[6] << 8 | pdu.header[7]);
    pdu.data.resize((length + 3) / 4 * 4);
    fill(pdu.data);
    return pdu;
}

void ScriptedConnection::send(const std::vector<SD_UINT8> &bytes)
{
    for (std::size_t place = 0; place < bytes.size();) {
        const ssize_t sent = ::send(socket_, bytes.data() + place, bytes.size() - place, MSG_NOSIGNAL);
        if (sent <= 0) {
            throw std::runtime_error("closed");
        }
        place += static_cast<std::size_t>(sent);
    }
}

void ScriptedConnection::send(const Pdu &pdu)
{
    send(bytesOf(pdu));
}

void ScriptedConnection::acceptLogin()
{
    send(loginAnswer(receive(), 0));
}

void ScriptedConnection::stayUntilClosed()
{
    SD_UINT8 byte = 0;
    while (recv(socket_, &byte, 1, 0) > 0) {
    }
}

Pdu answerTo(const Pdu &request, SD_UINT8 opcode)
{
    Pdu answer;
    answer.header[0] = opcode;
    answer.header[1] = 0x80;
    std::copy_n(request.header.begin() + 16, 4, answer.header.begin() + 16); // task tag
    std::copy_n(request.header.begin() + 24, 4, answer.header.begin() + 28); // expected command number
    std::copy_n(request.header.begin() + 24, 4, answer.header.begin() + 32); // and the highest one, 256 further
    for (auto byte = answer.header.begin() + 34; ++*byte == 0 && byte != answer.header.begin() + 32; --byte) {
    }
    return answer;
}

Pdu loginAnswer(const Pdu &request, int status)
{
    Pdu answer = answerTo(request, LOGIN_RESPONSE);
    answer.header[1] = status == 0 ? 0x87 : 0x80;
    std::copy_n(request.header.begin() + 8, 6, answer.header.begin() + 8);
    answer.header[15] = 1; // the session's number
    answer.header[36] = static_cast<SD_UINT8>(status >> 8);
    answer.header[37] = static_cast<SD_UINT8>(status);
    return answer;
}

std::vector<SD_UINT8> bytesOf(const Pdu &pdu)
{
    std::vector<SD_UINT8> bytes = pdu.header;
    bytes[5] = static_cast<SD_UINT8>(pdu.data.size() >> 16);
    bytes[6] = static_cast<SD_UINT8>(pdu.data.size() >> 8);
    bytes[7] = static_cast<SD_UINT8>(pdu.data.size());
    bytes.insert(bytes.end(), pdu.data.begin(), pdu.data.end());
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return bytes;
}

ScriptedTarget::ScriptedTarget(Script script) : script_(std::move(script))
{
    sockaddr_in name{};
    socklen_t size = sizeof name;
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener_, reinterpret_cast<sockaddr *>(&name), size) != 0 || listen(listener_, 1024) != 0
        || getsockname(listener_, reinterpret_cast<sockaddr *>(&name), &size) != 0) {
        throw std::runtime_error("no port");
    }
    port_ = ntohs(name.sin_port);
    thread_ = std::thread([this] { serve(); });
}

ScriptedTarget::~ScriptedTarget()
{
    ending_ = true;
    shutdown(listener_, SHUT_RDWR);
    shutdown(connection_, SHUT_RDWR);
    thread_.join();
    close(listener_);
}

void ScriptedTarget::serve()
{
    while (!ending_) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        connection_ = socket;
        try {
            ScriptedConnection connection(socket);
            script_(connection);
        } catch (const std::runtime_error &) {
            // the other side is gone, and the script with it
        }
        connection_ = -1;
        close(socket);
    }
}
