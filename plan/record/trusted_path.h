// Opening what nobody but root, or the user we run as, could have put there or can exchange: for
// what is about to be run. Used before the detection script is, and for the folders of PATH.
#pragma once

#include <sys/types.h>

#include <string>

#include "inspect/host.h"
#include "kiln/owners.h"
#include "kiln/result.h"

// Opens the file or folder (O_PATH) one name after the other, links included. Every folder on the
// way, every link and what is opened must belong to root or to us, and nobody else may write them.
// A sticky folder may be written by everybody as long as what we enter in it is a folder of ours,
// or a link that has no other name. Without a descriptor and without a reason: there is no such
// file, or none for us. The reason begins with the path that somebody else has in his hands, and
// says whose it is.
Kiln::Result<Kiln::Descriptor> open_trusted(const std::string& path, const HostPaths& tables);
