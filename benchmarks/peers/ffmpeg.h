#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace velicor::benchmarks {

// The filters that do what an analysis does, on one stream of frames: vectorscope, RGB parade and a
// false-colour preview, each from the form of the picture that its filter works on. The results are labelled
// "v", "w" and "p".
extern const char* const ffmpegGraph;

// Runs the program to its end. Processor time of all its threads, seconds. Throws where it fails.
double cpuOfFfmpeg(const std::vector<std::string>& arguments);

}  // namespace velicor::benchmarks
