#pragma once
// Holds back window events for a short piece of work that must not be
// interrupted by the user's next key press or click.

#include "common/Context.h"

#include <functional>
#include <utility>

namespace ht
{

class EventsHeld
{
  public:
    explicit EventsHeld(Context &ctx) : m_ctx(ctx), m_events(std::exchange(ctx.processEvents, nullptr)) {}
    ~EventsHeld() { m_ctx.processEvents = std::move(m_events); }
    EventsHeld(const EventsHeld &) = delete;
    EventsHeld &operator=(const EventsHeld &) = delete;

  private:
    Context &m_ctx;
    std::function<void()> m_events;
};

} // namespace ht
