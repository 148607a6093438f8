// The two ways in which the parts of a program are drawn, as a person reads them.
#pragma once

constexpr wchar_t sequential_words[] = L"one part after the other";
constexpr wchar_t threaded_words[] = L"a thread for each part";
