#include "app/gestures.h"

#include <array>

namespace velicor {

namespace {

constexpr std::array onTheLoupe{
    Gesture{"Drag the four arrows, or just inside the edge", "move it"},
    Gesture{"Drag an edge or a corner", "resize it; 60 × 60 points is the smallest"},
    Gesture{"Click further inside", "reach the program below"},
    Gesture{"Click the other sign, or Space", "show or hide the scopes panel"},
    Gesture{"Arrows", "move it by 1 point, with Shift by 10"},
    Gesture{"Ctrl + arrows", "resize it by 1 point, with Shift by 10"},
    Gesture{"Esc", "give the keyboard back"}};

constexpr std::array onTheScopesPanel{
    Gesture{"Drag any part that is no control", "move it"},
    Gesture{"Tab, Shift + Tab", "go to the next control, or the one before"},
    Gesture{"Space, Return", "press, switch, open"},
    Gesture{"Arrows", "choose a tab, a segment or a preset; move a slider, with Home and End to its ends"},
    Gesture{"Page Up, Page Down", "scroll; on a slider, move it by large steps"}};

constexpr std::array inEveryWindow{
    Gesture{"F6", "take the keyboard from the scopes panel to the loupe, and back"},
    Gesture{"Ctrl + 1, 2, 3", "show the original, the skin indicator, the exposure heatmap"},
    Gesture{"Ctrl + L", "lock or unlock the loupe"},
    Gesture{"F10, right click", "open the menu"},
    Gesture{"F1", "show this list"},
    Gesture{"Ctrl + Q", "quit"}};

constexpr std::array inEveryProgram{Gesture{globalShortcut, "hide Velicor to the status area, or bring it back"}};

constexpr std::array groups{GestureGroup{"On the loupe", onTheLoupe},
                            GestureGroup{"On the scopes panel", onTheScopesPanel},
                            GestureGroup{"In Velicor's windows", inEveryWindow},
                            GestureGroup{"In every program", inEveryProgram}};

}  // namespace

std::span<const GestureGroup> gestureGroups() { return groups; }

}  // namespace velicor
