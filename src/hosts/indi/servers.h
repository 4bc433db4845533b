// The INDI servers that are in use, each with one connection for all who have to do with it.
#pragma once

#include <map>
#include <memory>

#include "hosts/indi/client.h"
#include "hosts/indi/surroundings.h"

namespace vantrel::hosts::indi {

class Servers {
  public:
    explicit Servers(Surroundings surroundings) : surroundings_(std::move(surroundings)) {}

    const Surroundings& surroundings() const { return surroundings_; }

    /// The one client of the server; it exists as long as a device holds it.
    std::shared_ptr<Client> client(const ServerAddress& server) {
        auto client = clients_[server].lock();
        if (!client) {
            client = std::make_shared<Client>(surroundings_.loop, surroundings_.streams, server,
                                              surroundings_.tell);
            clients_[server] = client;
        }
        return client;
    }

  private:
    Surroundings surroundings_;
    std::map<ServerAddress, std::weak_ptr<Client>> clients_;
};

}  // namespace vantrel::hosts::indi
