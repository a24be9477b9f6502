#include "server/operation/CommandLine.h"

int main(int count, char *arguments[])
{
    return talvenor::server::runCommandLine({arguments + 1, arguments + count});
}
