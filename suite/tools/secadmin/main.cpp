// nebra-secadmin: administration of the suite's security database.

#include "AdminTool.h"

int main(int argc, char** argv)
{
    return nebra::AdminTool::main(argc, argv);
}
