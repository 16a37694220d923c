/*
 * IacState.cpp: putting every table of the messaging code back to its state at load.
 */
#include "iac/IacTables.h"

void ResetIacState(void)
{
    ResetPartnerTables();
    ResetSharingMenus();
    ResetMapTables();
}
