// A program that does nothing for as many seconds as its argument says (default 30), for
// the process detection test, which runs copies of it under Pawnsketch-like names. Only the
// C library: a copy runs wherever it is put, without libraries beside it.
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

int main(int argc, char *argv[])
{
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 30;
#ifdef _WIN32
    Sleep(DWORD(seconds) * 1000);
#else
    sleep(unsigned(seconds));
#endif
    return 0;
}
