#include "app/cvd_program.h"

int main(int argc, char** argv)
{
    return cvd::app::run_cvd(argc, argv);
}
