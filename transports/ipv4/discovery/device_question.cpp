#include "discovery/device_question.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <set>
#include <string_view>

#include "net/tcp_socket.h"
#include "qvn/result_codes.h"

namespace qvn::ipv4 {
namespace {

using SteadyClock = std::chrono::steady_clock;

// The system keeps some hundred answers for us; we take them in before that many can have come.
constexpr std::size_t kQuestionsAtOnce = 64;

class UdpSocket {
 public:
  UdpSocket() : fd_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}
  ~UdpSocket() {
    if (isOpen()) close(fd_);
  }
  UdpSocket(const UdpSocket&) = delete;
  UdpSocket& operator=(const UdpSocket&) = delete;

  bool isOpen() const { return fd_ >= 0; }
  int fd() const { return fd_; }

  void send(const Endpoint& to, std::string_view datagram) {
    sockaddr_in where{};
    where.sin_family = AF_INET;
    where.sin_port = htons(to.port);
    where.sin_addr.s_addr = htonl(to.address);
    // A place that cannot be reached does not answer; there is nothing else to do about it.
    sendto(fd_, datagram.data(), datagram.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&where),
           sizeof where);
  }

  // False when nothing is waiting. A datagram longer than `buffer` comes cut.
  bool receive(Endpoint& from, std::vector<char>& buffer, std::string_view& datagram) {
    sockaddr_in where{};
    socklen_t size = sizeof where;
    const ssize_t got =
        recvfrom(fd_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&where), &size);
    if (got < 0) return false;
    from = {ntohl(where.sin_addr.s_addr), ntohs(where.sin_port)};
    datagram = std::string_view(buffer.data(), static_cast<std::size_t>(got));
    return true;
  }

 private:
  const int fd_;
};

std::string newToken() {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::random_device random;
  std::string token;
  for (int i = 0; i < 16; ++i) token += kDigits[random() % 16];
  return token;
}

// One question to many places, until the deadline.
class Question {
 public:
  Question(const std::vector<Endpoint>& places, const std::string& wanted, SteadyClock::time_point deadline,
           std::vector<AnsweringDevice>& answers)
      : wanted_(wanted), deadline_(deadline), answers_(answers), waiting_(places.begin(), places.end()) {}

  bool canAsk() const { return socket_.isOpen(); }

  void ask() {
    const std::vector<Endpoint> silent(waiting_.begin(), waiting_.end());
    for (std::size_t i = 0; i < silent.size() && !isOver(); ++i) {
      socket_.send(silent[i], discoveryQuestion(token_));
      if (i % kQuestionsAtOnce == kQuestionsAtOnce - 1) takeAnswers();
    }
  }

  // Takes in answers until then, or until nothing else is to come.
  void listen(SteadyClock::time_point end) {
    for (;;) {
      takeAnswers();
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now()).count();
      if (isOver() || left <= 0) return;
      pollfd entry{socket_.fd(), POLLIN, 0};
      if (poll(&entry, 1, static_cast<int>(std::min<std::int64_t>(left, 60000))) < 0 && errno != EINTR)
        return;
    }
  }

 private:
  bool isOver() const { return waiting_.empty() || wantedFound_ || SteadyClock::now() >= deadline_; }

  // Whoever floods us does so until the deadline at most.
  void takeAnswers() {
    Endpoint from;
    std::string_view datagram;
    while (!isOver() && socket_.receive(from, buffer_, datagram)) {
      if (waiting_.find(from) == waiting_.end()) continue;  // not asked, or it has answered already
      auto answer = parseAnswer(datagram, token_);
      if (!answer) continue;
      waiting_.erase(from);
      wantedFound_ = answer->serial == wanted_;
      answers_.push_back({from, std::move(*answer)});
    }
  }

  UdpSocket socket_;
  // Ties an answer to this question: nothing that was sent before it can fit.
  const std::string token_ = newToken();
  const std::string wanted_;
  const SteadyClock::time_point deadline_;
  std::vector<AnsweringDevice>& answers_;
  std::set<Endpoint> waiting_;
  bool wantedFound_ = false;
  std::vector<char> buffer_ = std::vector<char>(kMaxAnswer + 1);
};

}  // namespace

std::uint32_t askPlaces(const std::vector<Endpoint>& places, const std::string& wanted,
                        std::chrono::milliseconds timeout, std::vector<AnsweringDevice>& answers) {
  if (places.empty()) return QRN_ERROR_SUCCESS;
  const auto start = SteadyClock::now();
  Question question(places, wanted, start + timeout, answers);
  if (!question.canAsk()) return codeFromErrno(errno);
  question.ask();
  question.listen(start + timeout / 2);
  question.ask();
  question.listen(start + timeout);
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::ipv4
