// nebra-secadmin as the tests start it: the same tool, reading the
// system-wide settings file where the test that started it put it.

#include "AdminTool.h"
#include "UserFolders.h"

int main(int argc, char** argv)
{
    nebra::test::UserFolders::adoptTestPolicyFile();
    return nebra::AdminTool::main(argc, argv);
}
