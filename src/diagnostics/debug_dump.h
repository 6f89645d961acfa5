#pragma once

#include <memory>
#include <string_view>

#include "platform/gpu/device.h"

class QWidget;

namespace velicor {

// Aids for developers, off unless the environment asks for them. Nothing here ever reports a failure.
//
// VELICOR_STATS=1 counts events and logs the counts every second. VELICOR_DUMP=PREFIX writes pictures to
// PREFIX-NAME.png, which only their owner can read, in the place of an earlier file of that name; nothing is
// put between, so an empty prefix gives "-NAME.png" in the working directory.
struct DebugDump {
  // Whether VELICOR_STATS was exactly "1" when this was first asked.
  static bool statsEnabled();

  // Counts one event, such as "captured" or "drawn". Any thread; costs one look at a flag when off.
  static void tick(std::string_view name);

  // Writes a texture of the device's memory. Any thread but a device's; waits for the device. Colours are
  // those of the texture, alpha is ignored.
  static void write(const std::shared_ptr<gpu::Texture>& texture,
                    const std::shared_ptr<gpu::CommandQueue>& queue, std::string_view name);

  // Writes what the view shows now. Main thread.
  static void writeView(QWidget& view, std::string_view name);
};

}  // namespace velicor
