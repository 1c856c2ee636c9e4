#pragma once

namespace vorp {

// The whole run: options, input, passes, exit status.
int vorpMain(int argc, char** argv);

} // namespace vorp
