// Daemons and scripted targets for the tests, see Daemons.h.
#include "Daemons.h"

#include "Fields.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace
{

constexpr auto START_TIME = std::chrono::seconds(10);

std::string makeFolder()
{
    std::string path = "/tmp/tavo-host-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    return path;
}

// Tries until it works.
template <typename Attempt>
void await(const std::string &what, Attempt &&attempt)
{
    const auto end = std::chrono::steady_clock::now() + START_TIME;
    while (!attempt()) {
        if (std::chrono::steady_clock::now() > end) {
            throw std::runtime_error(what + " does not work");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

// Where a program is; empty when it is not installed.
std::string findProgram(const std::string &name)
{
    for (const std::string folder : {TAVO_SERVERS "/usr/sbin/", "/usr/sbin/", "/usr/bin/"}) {
        if (access((folder + name).c_str(), X_OK) == 0) {
            return folder + name;
        }
    }
    return "";
}

struct Bound {
    int socket;
    SD_UINT16 port;
};

// A socket bound to a free port of a numeric address.
Bound bindSocket(const std::string &address)
{
    sockaddr_in6 six{};
    sockaddr_in four{};
    const bool isSix = inet_pton(AF_INET6, address.c_str(), &six.sin6_addr) == 1;
    six.sin6_family = AF_INET6;
    four.sin_family = AF_INET;
    inet_pton(AF_INET, address.c_str(), &four.sin_addr);
    auto *name = isSix ? reinterpret_cast<sockaddr *>(&six) : reinterpret_cast<sockaddr *>(&four);
    socklen_t size = isSix ? sizeof six : sizeof four;
    const int made = socket(name->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (made < 0 || bind(made, name, size) != 0 || getsockname(made, name, &size) != 0) {
        throw std::runtime_error("no port of " + address);
    }
    return {made, ntohs(isSix ? six.sin6_port : four.sin_port)};
}

bool canConnect(const std::string &address, SD_UINT16 port)
{
    sockaddr_in four{};
    four.sin_family = AF_INET;
    four.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &four.sin_addr);
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool connected = connect(made, reinterpret_cast<const sockaddr *>(&four), sizeof four) == 0;
    close(made);
    return connected;
}

} // namespace

TemporaryFolder::TemporaryFolder() : path(makeFolder()) {}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

ChildProcess::ChildProcess(const std::vector<std::string> &command, const std::string &output,
                           const std::vector<std::string> &environment)
{
    // It does not outlive the test, however that ends.
    std::vector<std::string> words{"/usr/bin/setpriv", "--pdeathsig", "KILL", findProgram(command.front())};
    words.insert(words.end(), command.begin() + 1, command.end());
    std::vector<std::string> assignments = environment;
    std::vector<char *> arguments;
    std::ranges::transform(words, std::back_inserter(arguments), [](std::string &word) { return word.data(); });
    arguments.push_back(nullptr);
    std::vector<char *> variables;
    std::ranges::transform(assignments, std::back_inserter(variables), [](std::string &text) { return text.data(); });
    variables.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    const int error = posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), variables.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error(command.front() + " cannot be started");
    }
}

ChildProcess::~ChildProcess()
{
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

void ChildProcess::signal(int number) const
{
    ::kill(process_, number);
}

int ChildProcess::wait()
{
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool isInstalled(const std::string &program)
{
    return !findProgram(program).empty();
}

SD_UINT16 freePort(const std::string &address)
{
    const Bound bound = bindSocket(address);
    close(bound.socket);
    return bound.port;
}

TargetDaemon::TargetDaemon(std::string address) : address_(std::move(address)), port_(freePort(address_))
{
    start();
}

ISCSIIPADDR TargetDaemon::address() const
{
    return makeAddress(address_);
}

int TargetDaemon::addTarget(const std::string &name)
{
    const std::string number = std::to_string(++lastTarget_);
    administer({"--mode", "target", "--op", "new", "--tid", number, "-T", name});
    administer({"--mode", "target", "--op", "bind", "--tid", number, "-I", "ALL"});
    return lastTarget_;
}

void TargetDaemon::removeTarget(int target)
{
    administer({"--mode", "target", "--op", "delete", "--force", "--tid", std::to_string(target)});
}

void TargetDaemon::addUnit(int target, int lun)
{
    administer({"--mode", "logicalunit", "--op", "new", "--tid", std::to_string(target), "--lun", std::to_string(lun),
                "--bstype", "null", "-b", "/dev/null"});
}

void TargetDaemon::addDisk(int target, int lun, SD_UINT64 bytes, unsigned blockSize)
{
    const std::string file = folder_.path + "/disk" + std::to_string(target) + "." + std::to_string(lun);
    std::ofstream(file).close();
    std::filesystem::resize_file(file, bytes); // takes no room on the disk
    administer({"--mode", "logicalunit", "--op", "new", "--tid", std::to_string(target), "--lun", std::to_string(lun),
                "-b", file, "--blocksize", std::to_string(blockSize)});
}

void TargetDaemon::addAccount(int target, const std::string &name, const std::string &secret, bool outgoing)
{
    administer({"--mode", "account", "--op", "new", "--user", name, "--password", secret});
    std::vector<std::string> bind{"--mode", "account", "--op", "bind", "--tid", std::to_string(target), "--user", name};
    if (outgoing) {
        bind.emplace_back("--outgoing");
    }
    administer(bind);
}

void TargetDaemon::freeze() const
{
    process_->signal(SIGSTOP);
}

void TargetDaemon::resume() const
{
    process_->signal(SIGCONT);
}

void TargetDaemon::kill()
{
    process_.reset();
}

void TargetDaemon::start()
{
    const bool six = address_.find(':') != std::string::npos;
    const std::string portal = (six ? "[" + address_ + "]" : address_) + ":" + std::to_string(port_);
    process_ = std::make_unique<ChildProcess>(std::vector<std::string>{"tgtd", "-f", "--iscsi", "portal=" + portal},
                                              folder_.path + "/log",
                                              std::vector<std::string>{"TGT_IPC_SOCKET=" + folder_.path + "/control"});
    await("tgtd", [&] { return tell({"--mode", "system", "--op", "show"}); });
    for (const auto &arguments : history_) {
        if (!tell(arguments)) {
            throw std::runtime_error("tgtd does not take what it took before");
        }
    }
}

void TargetDaemon::administer(const std::vector<std::string> &arguments)
{
    if (!tell(arguments)) {
        throw std::runtime_error("tgtadm fails with " + arguments[1]);
    }
    history_.push_back(arguments);
}

bool TargetDaemon::tell(const std::vector<std::string> &arguments) const
{
    std::vector<std::string> command{"tgtadm", "--lld", "iscsi"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess admin(command, "/dev/null", {"TGT_IPC_SOCKET=" + folder_.path + "/control"});
    return admin.wait() == 0;
}

IsnsDaemon::IsnsDaemon()
    : address_("127.99." + std::to_string(getpid() / 250 % 250) + "." + std::to_string(1 + getpid() % 250))
{
    std::filesystem::create_directory(folder_.path + "/database");
    std::ofstream(folder_.path + "/server") << "SourceName = iqn.2024-01.example:isns\n"
                                            << "Database = " << folder_.path << "/database\n"
                                            << "PIDFile = " << folder_.path << "/pid\n"
                                            << "BindAddress = " << address_ << "\n"
                                            << "DefaultDiscoveryDomain = 1\nSecurity = 0\nESIMinInterval = 0\n";
    std::ofstream(folder_.path + "/client")
        << "SourceName = iqn.2024-01.example:admin\nSecurity = 0\nServerAddress = " << address_ << "\n";
    process_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"isnsd", "-4", "-f", "-c", folder_.path + "/server"}, folder_.path + "/log");
    constexpr SD_UINT16 isnsPort = 3205;
    await("isnsd", [&] { return canConnect(address_, isnsPort); });
}

ISCSIIPADDR IsnsDaemon::address() const
{
    return makeAddress(address_);
}

void IsnsDaemon::addTargets(const std::string &prefix, int count)
{
    std::vector<std::string> command{"isnsadm", "-c", folder_.path + "/client", "--register", "entity=" + prefix};
    for (int number = 0; number < count; ++number) {
        command.push_back("target=" + prefix + std::to_string(number) + ",alias=unit" + std::to_string(number));
    }
    command.insert(command.end(), {"portal=10.9.0.1:3260", "portal=[fd09::1]:3261"});
    ChildProcess admin(command, folder_.path + "/log");
    if (admin.wait() != 0) {
        throw std::runtime_error("isnsadm fails");
    }
}

Pdu ScriptedConnection::receive()
{
    Pdu pdu;
    receive(pdu.header);
    const std::size_t length = static_cast<std::size_t>(pdu.header[5] << 16 | pdu.header[6] << 8 | pdu.header[7]);
    pdu.data.resize((length + 3) / 4 * 4);
    receive(pdu.data);
    return pdu;
}

void ScriptedConnection::receive(std::vector<SD_UINT8> &bytes)
{
    if (!bytes.empty()
        && recv(socket_, bytes.data(), bytes.size(), MSG_WAITALL) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("closed");
    }
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
    const Pdu request = receive();
    Pdu answer = answerTo(request, 0x23);
    answer.header[1] = 0x87; // on to the full feature phase
    std::copy_n(request.header.begin() + 8, 6, answer.header.begin() + 8);
    answer.header[15] = 1; // the session's number
    send(answer);
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
    std::copy_n(request.header.begin() + 24, 4, answer.header.begin() + 32); // and the highest one
    answer.header[34] = static_cast<SD_UINT8>(answer.header[34] + 1);
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
    const Bound bound = bindSocket("127.0.0.1");
    listener_ = bound.socket;
    port_ = bound.port;
    listen(listener_, 1024);
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
