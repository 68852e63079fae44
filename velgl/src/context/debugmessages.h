#pragma once

namespace Atelier::Vel {

/// Sends the debug messages of the natively current context to the logging category "velgl", unless the
/// context has a receiver already.
void logDebugMessages();

enum class DebugDelivery { AnyTime, AtOnce };

/// Has the natively current context send messages; `AtOnce` within the call that they are about.
void enableDebugMessages(DebugDelivery delivery);

} // namespace Atelier::Vel
