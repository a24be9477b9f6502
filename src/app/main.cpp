#include "app/TalvenorApp.h"

int main(int argc, char **argv)
{
    return talvenor::TalvenorApp::run(argc, argv);
}
