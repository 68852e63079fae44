#pragma once

namespace Atelier::Vel {

/// Logs the debug messages of the natively current context in the category "velgl", unless the context has a
/// debug callback already.
void logDebugMessages();

enum class DebugDelivery { Asynchronous, Synchronous };

/// Enables the debug messages of the natively current context. A `Synchronous` message arrives within the
/// call that causes it.
void enableDebugMessages(DebugDelivery delivery);

} // namespace Atelier::Vel
