// What the entry changes about its own process before the run, for the commands that it starts.
#pragma once

// Fills closed standard descriptors, so that nothing opened later takes their place. Sets LC_ALL to
// C in the environment, since the commands' texts are read in English, and raises the soft stack
// limit to as much as Linux uses for a command's arguments, since a host with many open files needs
// long argument lists. Lets a write beyond the file size limit fail instead of ending the process,
// for which the commands get the default back. What cannot be set stays as it is. errno is kept.
void prepare_process();
