// SPDX-License-Identifier: Apache-2.0
// Carries QMI packets between clients and services: over the kernel's QRTR sockets, or over a Unix
// SEQPACKET socket where the kernel has no QRTR. Both transports carry the same packets (a QMI
// header and TLVs, one message a packet) and have a name service that announces servers to clients.
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

// One instance of a service. `instance` holds the version in its low byte and the instance number
// in the bits above, as in the QRTR name service.
struct ServerAddress {
  uint32_t service = 0;
  uint32_t instance = 0;
  uint32_t node = 0;
  uint32_t port = 0;

  bool operator==(const ServerAddress&) const = default;
};

struct Announcement {
  enum class Kind {
    appeared,
    gone,
    end_of_list
  } kind;  // end_of_list: all servers present have been announced
  ServerAddress server;
};

enum class Status {
  ok,
  nothing,   // no packet for the caller; not sent within the time allowed
  gone,      // the service or the peer has gone away permanently
  failed,    // the socket failed; errno is set
  too_long,  // the packet is longer than the buffer, which holds its start; the rest is lost
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
  // Reads one announcement without waiting. `gone`: the name service has gone away.
  virtual Status next(Announcement& announcement) = 0;
};

// A client's packets to and from one server.
class Channel {
 public:
  virtual ~Channel() = default;
  virtual int fd() const = 0;
  // Sends one packet. Waits until the deadline while the server's queue is full. Thread-safe.
  virtual Status send(std::span<const uint8_t> packet, Deadline deadline) = 0;
  // Reads one packet without waiting. One thread at a time may receive. The buffer has room for
  // kMaxPacketSize bytes; the channel stays usable after a longer packet.
  virtual Received receive(std::span<uint8_t> buffer) = 0;
  // As receive(), but waits up to kReceiveTime for a packet. Other threads can send meanwhile.
  virtual Received receive_waiting(std::span<uint8_t> buffer) = 0;
};
constexpr std::chrono::milliseconds kReceiveTime{100};

// A client of a server, as the server sees it.
using Peer = uint64_t;

struct ServerEvent {
  enum class Kind {
    nothing,
    packet,
    peer_gone,       // the peer has closed its end
    peer_dropped,    // the server has dropped the peer because it does not read
    no_descriptors,  // new connections wait for a free descriptor; reported once a shortage
  } kind = Kind::nothing;
  uint32_t service = 0;
  Peer peer = 0;
  size_t size = 0;  // packet: its bytes in the buffer; peer_dropped: the bytes it had not read
};

// When a server drops a peer that does not read.
struct ServerLimits {
  // A peer that has packets waiting is dropped after reading none for this long. The time is long
  // because a slow client must not lose indications.
  std::chrono::milliseconds stuck_after = std::chrono::seconds(30);
  // A peer with more bytes waiting than this is dropped at once.
  size_t queue = size_t{64} << 20;
};

// The modem's end: publishes services and serves their clients. Not thread-safe.
class Server {
 public:
  virtual ~Server() = default;
  // An epoll descriptor for all sockets. Readable when next() has an event to handle.
  virtual int fd() const = 0;
  // Brings up one instance of a service and announces it. False when it is up already or cannot be
  // announced (errno is set).
  virtual bool publish(uint32_t service, uint32_t instance) = 0;
  // Takes down all instances of a service. Their clients receive `gone`; the server removes them
  // without a `peer_gone` event.
  virtual void withdraw(uint32_t service) = 0;
  // The same for one instance. Does nothing when it is not up.
  virtual void withdraw_instance(uint32_t service, uint32_t instance) = 0;
  // Handles one event without waiting. Packets are read into `buffer`, which has room for
  // kMaxPacketSize bytes.
  virtual ServerEvent next(std::span<uint8_t> buffer) = 0;
  // Never waits: queues what the peer has no room for; next() sends it later. `gone`: the peer has
  // gone away (removed without a `peer_gone` event) or is dropped because its queue is full.
  virtual Status send(Peer peer, std::span<const uint8_t> packet) = 0;
  // Flow control for endless senders: true when a client of the service has an empty queue and no
  // other client is still reading its own. Clients that have stopped reading are ignored.
  virtual bool has_room(uint32_t service) const = 0;
  // The clients of a service, to send indications to. Over QRTR a client becomes known with its
  // first packet.
  virtual std::vector<Peer> peers(uint32_t service) const = 0;
};

// Where the modem is.
struct Endpoint {
  enum class Kind { qrtr, unix_socket } kind;
  std::string path;  // unix_socket only
};

// Parses "qrtr" or "unix:PATH". Returns nullopt for any other text.
std::optional<Endpoint> parse_endpoint(const std::string& text);

// The endpoint in the environment variable QOREXT_MODEM, by default unix:/run/qorext_modem.sock.
std::optional<Endpoint> endpoint_from_environment();

// Null when the name service cannot be reached (errno is set).
std::unique_ptr<ServiceWatch> watch_service(const Endpoint& endpoint, uint32_t service,
                                            uint32_t version);
// Null when the server cannot be reached (errno is set).
std::unique_ptr<Channel> open_channel(const Endpoint& endpoint, const ServerAddress& server);
// Null when the endpoint cannot be served, for example because it is in use (errno is set).
std::unique_ptr<Server> serve(const Endpoint& endpoint, const ServerLimits& limits = {});

}  // namespace qmi_transport
