#include "startup/config/process_identity.h"

HINSTANCE __osw_hinstance;
u32 __osw_process_id;
char __osw_app_exe_name[MAX_PATH];
i32 __osw_app_special_window;
