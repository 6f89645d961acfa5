#pragma once

#include "peers/table.h"

// The rows of the table, by what they need. Each measures ours and the peer alternately in several rounds.
namespace velicor::benchmarks {

// Preview and both scopes, processor time a frame, beside one graph of ffmpeg.
void addAnalysisRows(Table& table);

// The preview's kernel beside a copy of the frame.
void addFalseColorRow(Table& table);

// The capture beside a plain copy of the root window.
void addCaptureRows(Table& table);

// The whole program at work, beside ffmpeg that grabs, analyses and displays; and its memory at work beside a
// bare window's.
void addWorkRows(Table& table);

// The whole program over a screen on which nothing changes.
void addStillRow(Table& table);

// From a change of the screen to the changed pixel in the loupe.
void addLatencyRows(Table& table);

// From the start to the first analysed pixel, beside a bare window's first.
void addStartRow(Table& table);

}  // namespace velicor::benchmarks
