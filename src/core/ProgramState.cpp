#include "core/ProgramState.h"

ProgramState &programState()
{
    static ProgramState state;
    return state;
}
