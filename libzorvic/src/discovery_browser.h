#pragma once

#include "discovery_records.h"

#include <memory>
#include <string>

namespace Zorvic::Internal {

/// Told of what a ServiceBrowser finds, on a thread of the browser.
class ServiceListener {
public:
    virtual ~ServiceListener() = default;
    /// A service is there, or its address, port or text changed.
    virtual void OnAnnounced(const AnnouncedUnit& announced) = 0;
    virtual void OnWithdrawn(const std::string& key) = 0;
};

/// Searches the network for units from its construction on. The destructor waits until no report is running.
class ServiceBrowser {
public:
    virtual ~ServiceBrowser() = default;
};

/// Searches one interface, or all when the name is empty. `listener` must outlive the browser. Throws
/// std::runtime_error with the reason when this machine does not let it search.
std::unique_ptr<ServiceBrowser> MakeServiceBrowser(const std::string& interfaceName, ServiceListener& listener);

}  // namespace Zorvic::Internal
