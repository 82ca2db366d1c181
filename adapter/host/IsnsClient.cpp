// Conversation with an iSNS server, see IsnsClient.h.
#include "IsnsClient.h"

#include "Files.h"
#include "IsnsMessage.h"
#include "SocketAddress.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <span>
#include <vector>

namespace
{

constexpr SD_UINT16 ISNS_PORT = 3205;
constexpr SD_UINT16 ANSWER = 0x8000;            // in the function of an answer
constexpr std::size_t LONGEST_ANSWER = 4 << 20; // bytes; more than any number of targets that a caller takes
constexpr SD_UINT32 STATUS_NO_SUCH_ENTRY = 9;

// How a conversation ended early.
struct Ended {
    Reach reach;
};

class Conversation
{
public:
    Conversation(const SocketAddress &server, Deadline deadline)
        : socket_(socket(server.family(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)), deadline_(deadline)
    {
        if (!socket_ || (connect(socket_.number(), server.get(), server.size) != 0 && errno != EINPROGRESS)
            || !isReady(POLLOUT)) {
            throw Ended{Reach::unreachable};
        }
        int error = 0;
        socklen_t size = sizeof error;
        if (getsockopt(socket_.number(), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0) {
            throw Ended{Reach::unreachable};
        }
    }

    void send(std::span<const SD_UINT8> bytes)
    {
        while (!bytes.empty()) {
            const ssize_t sent = ::send(socket_.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            advance(bytes, sent, POLLOUT);
        }
    }

    // The answer to a request, put together from its pieces.
    std::vector<SD_UINT8> receive(IsnsFunction function, SD_UINT16 transaction)
    {
        std::vector<SD_UINT8> answer;
        for (bool last = false; !last;) {
            std::array<SD_UINT8, ISNS_HEADER_SIZE> bytes{};
            receive(bytes);
            const auto header = parseIsnsHeader(bytes);
            const std::size_t before = answer.size();
            if (!header || header->function != (static_cast<SD_UINT16>(function) | ANSWER)
                || header->transaction != transaction || before + header->length > LONGEST_ANSWER) {
                throw Ended{Reach::refused};
            }
            answer.resize(before + header->length);
            receive(std::span(answer).subspan(before));
            last = header->last;
        }
        return answer;
    }

private:
    void receive(std::span<SD_UINT8> bytes)
    {
        while (!bytes.empty()) {
            const ssize_t received = recv(socket_.number(), bytes.data(), bytes.size(), 0);
            if (received == 0) {
                throw Ended{Reach::refused}; // closed instead of an answer
            }
            advance(bytes, received, POLLIN);
        }
    }

    template <typename Span>
    void advance(Span &bytes, ssize_t done, short event)
    {
        if (done >= 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(done));
        } else if (errno != EAGAIN && errno != EINTR) {
            throw Ended{Reach::refused};
        } else if (!isReady(event)) {
            throw Ended{Reach::timeout};
        }
    }

    // Waits; false when the deadline has passed.
    bool isReady(short event) const
    {
        for (int left = millisecondsLeft(deadline_); left > 0; left = millisecondsLeft(deadline_)) {
            pollfd wait{socket_.number(), event, 0};
            if (poll(&wait, 1, left) > 0) {
                return true;
            }
        }
        return false;
    }

    Descriptor socket_;
    Deadline deadline_;
};

} // namespace

IsnsResult queryIsnsServer(const ISCSIIPADDR &server, const std::string &initiatorName,
                           const std::string &interfaceName, Deadline deadline)
{
    try {
        Conversation conversation(socketAddress(server, ISNS_PORT, interfaceName), deadline);
        // A server that takes no registration may answer the query all the same.
        conversation.send(isnsRegistration(initiatorName, 1));
        conversation.receive(IsnsFunction::deviceRegister, 1);
        conversation.send(isnsTargetQuery(initiatorName, 2));
        const std::vector<SD_UINT8> answer = conversation.receive(IsnsFunction::deviceQuery, 2);
        const auto status = isnsStatus(answer);
        if (status == STATUS_NO_SUCH_ENTRY) {
            return {Reach::session, {}};
        }
        auto targets = parseIsnsTargets(answer);
        if (status != 0U || !targets) {
            return {Reach::refused, {}};
        }
        return {Reach::session, std::move(*targets)};
    } catch (const Ended &ended) {
        return {ended.reach, {}};
    }
}
