#include "cli/clirunner.h"

int main(int argc, char* argv[])
{
    return CliRunner::exec(argc, argv);
}
