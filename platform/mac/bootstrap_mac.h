// The application object's part in a launch.
#pragma once

// Runs the platform's event loop until launching has finished. By then the first document of every
// open request was handed to SetFileToOpen, in the requests' order.
void PlatformSetup();
