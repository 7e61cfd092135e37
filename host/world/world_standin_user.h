// What the person in front of the scripted desktop is going to do.
#pragma once

#include <string>
#include <vector>

namespace host::world {

// "MS point X,Y", "MS click X,Y", "MS drag X,Y,X2,Y2", "MS type TEXT", "MS compose TEXT" (by an input method) or "MS
// keys Ctrl+S", the time counting from the beginning of a watch. False: it is none of them.
bool AddUserAct(const std::string& act);
void ForgetUserActs();

// What was framed on the screen, in order: "green 0 0 10 10 button OK"; "" when the frame was taken away.
const std::vector<std::string>& OutlinesShown();

}  // namespace host::world
