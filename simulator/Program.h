#pragma once

namespace vorn_speaker {

/// vorn-speaker, from its command line to its exit status.
int program(int argc, char** argv);

}  // namespace vorn_speaker
