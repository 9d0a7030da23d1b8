// The application object's part in a launch.
#pragma once

// Runs the platform's event loop until launching has finished. By then every document that the user
// opened with the application was handed to SetFileToOpen, the last one last.
void PlatformSetup();
