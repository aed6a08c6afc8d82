// SPDX-License-Identifier: Apache-2.0
// How QMI packets travel between a client and a service: over the kernel's QRTR sockets, or over a
// Unix SEQPACKET socket where the kernel has none. Both carry the same packets (a QMI header and
// TLVs), one packet a message, and the same name service: clients learn where services are from
// announcements.
#pragma once

#include <stdint.h>
#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qmi_transport {

// The largest packet carried: a QMI header and a full 16-bit length of TLVs.
constexpr size_t kMaxPacketSize = 7 + 65535;

// One instance of a service. `instance` holds the version in its low byte, the instance number in
// the bits above, as the QRTR name service keeps them.
struct ServerAddress {
  uint32_t service = 0;
  uint32_t instance = 0;
  uint32_t node = 0;
  uint32_t port = 0;

  bool operator==(const ServerAddress&) const = default;
};

struct Announcement {
  enum class Kind { appeared, gone, end_of_list } kind;  // end_of_list: those present are told
  ServerAddress server;
};

enum class Status {
  ok,
  nothing,   // no packet for the caller this time; not sent within the time allowed
  gone,      // the service or the peer has gone away, for good
  failed,    // the socket failed; errno is set
  too_long,  // a packet that the buffer has no room for: it holds the start, the rest is dropped
};

using Deadline = std::chrono::steady_clock::time_point;

struct Received {
  Status status;
  size_t size = 0;
};

// A subscription to the name service for one service and version.
class ServiceWatch {
 public:
  virtual ~ServiceWatch() = default;
  virtual int fd() const = 0;
  // Reads one announcement; call when fd() is readable. `gone`: the name service has gone away.
  virtual Status next(Announcement& announcement) = 0;
};

// A client's packets to and from one server.
class Channel {
 public:
  virtual ~Channel() = default;
  virtual int fd() const = 0;
  // Sends one packet; waits while the server's queue is full, until the deadline. Any thread may
  // send.
  virtual Status send(std::span<const uint8_t> packet, Deadline deadline) = 0;
  // Reads one packet without waiting; call when fd() is readable, from one thread at a time. The
  // buffer has room for kMaxPacketSize bytes; the channel goes on after a longer packet.
  virtual Received receive(std::span<uint8_t> buffer) = 0;
  // As receive(), but waits for a packet, kReceiveTime at most; in one system call where sending
  // goes on meanwhile.
  virtual Received receive_waiting(std::span<uint8_t> buffer) = 0;
};
constexpr std::chrono::milliseconds kReceiveTime{100};

// A client of a server, as the server sees it.
using Peer = uint64_t;

struct ServerEvent {
  enum class Kind {
    nothing,
    packet,
    peer_gone,       // the peer has ended
    peer_dropped,    // the server has closed it, because it does not read
    no_descriptors,  // connections wait until descriptors are free; once a shortage
  } kind = Kind::nothing;
  uint32_t service = 0;
  Peer peer = 0;
  size_t size = 0;  // packet: in the buffer given; peer_dropped: the bytes that it had not taken
};

// What a server puts up with from a peer that does not read.
struct ServerLimits {
  // A peer that has packets waiting and takes none for this long is dropped. Long, because a client
  // may be slow and still must not lose an indication.
  std::chrono::milliseconds stuck_after = std::chrono::seconds(30);
  // A peer with more bytes waiting than this is dropped at once.
  size_t queue = size_t{64} << 20;
};

// The side of the modem: publishes services, serves their clients. For one thread.
class Server {
 public:
  virtual ~Server() = default;
  // Readable when next() has something to do (an epoll descriptor: all sockets behind it).
  virtual int fd() const = 0;
  // Brings one instance of a service up (announced to watchers). False when it is up already or
  // cannot be announced (errno is set).
  virtual bool publish(uint32_t service, uint32_t instance) = 0;
  // Takes all instances of a service down. Their clients see it go away; they are forgotten here
  // without a `peer_gone`.
  virtual void withdraw(uint32_t service) = 0;
  // The same for one instance, if it is up.
  virtual void withdraw_instance(uint32_t service, uint32_t instance) = 0;
  // Handles one event without waiting; packets are read into `buffer`, which has room for
  // kMaxPacketSize bytes.
  virtual ServerEvent next(std::span<uint8_t> buffer) = 0;
  // Never waits: what the peer does not take yet is kept and sent by next(). `gone`: the peer has
  // gone away and is forgotten without a `peer_gone`, or it is dropped for what it has not taken.
  virtual Status send(Peer peer, std::span<const uint8_t> packet) = 0;
  // Whether the service has clients that are ready for more: what is sent without end waits for
  // this. Clients that read are waited for; one that has stopped reading is not, unless it is
  // alone.
  virtual bool has_room(uint32_t service) const = 0;
  // The clients of a service that can be sent indications. Over QRTR the server learns of a client
  // from its first packet.
  virtual std::vector<Peer> peers(uint32_t service) const = 0;
};

// Where the modem is: "qrtr" or "unix:PATH". Nothing for any other text.
struct Endpoint {
  enum class Kind { qrtr, unix_socket } kind;
  std::string path;  // unix_socket only
};
std::optional<Endpoint> parse_endpoint(const std::string& text);

// The endpoint named by QOREXT_MODEM; without it "unix:/run/qorext_modem.sock".
std::optional<Endpoint> endpoint_from_environment();

// Null when there is no name service to be reached (errno is set).
std::unique_ptr<ServiceWatch> watch_service(const Endpoint& endpoint, uint32_t service,
                                            uint32_t version);
// Null when the server cannot be reached (errno is set).
std::unique_ptr<Channel> open_channel(const Endpoint& endpoint, const ServerAddress& server);
// Null when the endpoint cannot be served, for example because another server is there (errno
// is set).
std::unique_ptr<Server> serve(const Endpoint& endpoint, const ServerLimits& limits = {});

}  // namespace qmi_transport
