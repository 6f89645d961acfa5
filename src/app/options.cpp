#include "app/options.h"

#include <array>

#include "app/server_loss.h"
#include "platform/x11/session_kind.h"

namespace velicor {

namespace {

using Meaning = Option::Meaning;

constexpr std::array optionTable{
    Option{Meaning::toggle, "--toggle", "", "", "hide Velicor to the status area, or bring it back"},
    Option{Meaning::mode, "--mode", "", "MODE", "show it in the mode original, skin or exposure"},
    Option{Meaning::quit, "--quit", "", "", "end the Velicor that runs on this display"},
    Option{Meaning::diagnose, "--diagnose", "", "",
           "describe the surroundings, to be pasted into the report of a fault; nothing that is on the screen"},
    Option{Meaning::help, "--help", "-h", "", "show this help"},
    Option{Meaning::version, "--version", "", "", "show the version"},
    Option{Meaning::session, "-session", "", "ID", "said by session managers that start it again"}};

constexpr std::array variableTable{
    Variable{"VELICOR_STATS", "1", "log event counts every second"},
    Variable{"VELICOR_DUMP", "PREFIX", "write pictures to PREFIX-NAME.png; the modes are shown in turn for that"}};

constexpr std::array statusTable{
    ExitStatus{0, "ended by the user or by a signal that asks for it; or another Velicor runs and took the option"},
    ExitStatus{exitUsage, "there is no such option"},
    ExitStatus{x11::exitUnavailable,
               "nothing to run on: no X server, or a session in which other programs' windows can't be read"},
    ExitStatus{ServerLoss::exitServerLost, "the X server went away while it ran"}};

}  // namespace

std::span<const Option> options() { return optionTable; }
std::span<const Variable> variables() { return variableTable; }
std::span<const ExitStatus> exitStatuses() { return statusTable; }

std::string_view summary() { return VELICOR_SUMMARY; }

std::string_view usage() { return "velicor [OPTION]"; }

std::string_view description() {
  return "Where it runs already on this display, that one comes to the front, or does what the option says. "
         "Otherwise it starts. F1 in one of its windows tells what keys and mouse do.";
}

}  // namespace velicor
