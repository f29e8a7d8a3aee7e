#pragma once

#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace ZorvicUnit {

/// The listening end of a service.
class Server {
public:
    /// Listens on a numeric address; port 0 takes any free one. The service must outlive the object. Throws Fault when
    /// the port is taken or the address is not this machine's.
    Server(grpc::Service& service, const std::string& address, std::uint16_t port,
           const std::shared_ptr<grpc::ServerCredentials>& credentials = grpc::InsecureServerCredentials());
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// The port it really listens on.
    std::uint16_t Port() const { return BoundPort; }
    /// "address:port" as it is written for people and programs.
    const std::string& Address() const { return BoundAddress; }

    /// Takes no more requests, lets those in flight finish until the limit and then cancels them. Waits for the limit
    /// whenever a console is connected: an idle console does not notice that it is asked to leave.
    void Stop(std::chrono::milliseconds limit);

private:
    std::string BoundAddress;
    std::uint16_t BoundPort = 0;
    std::unique_ptr<grpc::Server> Listener;
};

}  // namespace ZorvicUnit
