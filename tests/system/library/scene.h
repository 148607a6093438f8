// Scenes: what one application does with its windows, shown once as it is and once spanned on each path. A scene is run
// by three processes; the first, with the library bypassed, keeps its pictures, and the others compare theirs with
// them.
#pragma once

#include <string>
#include <vector>

#include "support/check.h"
#include "window.h"

enum scene_role {
  reference_role,   // bypassed: what the screen shows must be what is read back, and is kept
  sequential_role,  // must be what the reference has kept, and is kept too
  threaded_role,    // must be what the reference has kept, and exactly what the sequential path has shown
};

// A word for each, also the folder of its pictures.
const char* word_of(scene_role role);

// Once in a process. `part_count` parts are expected of every window that shows something; 0 in the reference.
void begin_scenes(scene_role role, int part_count);

// Names what follows, for files and for the words of a failure. The scene's notes start anew.
void begin_scene(const char* name);

bool is_threaded();

// Whether this is a process that is spread in the basic mode.
bool is_basic();

// Parts that every window here must have; 0 when bypassed.
int expected_parts();

// Reads the frame back that was drawn to the window's back buffer, swaps, and then lets messages come until the screen
// shows it. Both pictures are kept or compared; no two that follow each other in a scene may be the same, or a picture
// that never changed would pass. The window belongs to the calling thread, and its context is current.
void show(const gl_window& window, const char* step);

// The same without the read-back, which would hand the frame over by itself.
void show_unread(const gl_window& window, const char* step);

// Nothing is swapped: whatever the scene has done for it, the picture has to come by itself, while messages are taken.
void show_left_alone(const gl_window& window, const char* step);

// As show, of a context that the library has no children for: the application's own window shows it.
void show_without_parts(const gl_window& window, const char* step);

// What is on the screen in place of a plain window's client area, with all that lies upon it.
void show_frame(HWND frame, const char* step);

// Keeps or compares a line of text.
void note(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Notes a sum over some memory, which is the same only for the same bytes.
void note_bytes(const char* name, const void* bytes, size_t size);

// Notes what glGetError says, and counts an error as a failed check.
void note_error(const char* name);

// The scenes, by their subjects.
struct scene_group {
  const char* name;
  std::vector<test_case> scenes;
};
extern const scene_group drawing_scenes, pixel_scenes, object_scenes, window_scenes, window_state_scenes,
    monitor_scenes, context_scenes, core_scenes, thread_scenes, pbuffer_scenes, mapping_scenes;
