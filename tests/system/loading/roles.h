// What a copy of this program does as an application, by the word on its command line.
#pragma once

// hold LIST READY GO    switches the wrapper on with the list, or only keeps it loaded if LIST is -, sets the event
//                       READY and ends when GO is set
// off                   switches the wrapper off
// section ON PATH       finds ON and PATH (-: none) in the shared section
// parts COUNT           makes a context current, and finds COUNT parts over its window
// late READY GO         sets READY, waits for GO, and then finds no parts
// show COUNT FILE       shows a picture in a window of COUNT parts, and finds it to be that of FILE, or makes FILE
// look_up COUNT         asks for every name, in a process with COUNT parts
// path sequential|threaded   draws with the library's parts, on this path
// unplanted             asks for a context, and finds that the library of tests that lies about was not loaded for it
//
// Result: the process's status, `good_status` if all was as it should be; -1 if the words are none of these.
int play_role(int count, char** words);
