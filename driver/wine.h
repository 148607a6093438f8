// Whether this is Wine, which never shows a child window that is drawn to.
#pragma once

bool is_under_wine();
