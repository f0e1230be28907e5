#pragma once

/// What the test program does when it is started as a host that ends in the middle of an operation.
namespace ShutdownHost {

enum ExitCode
{
    Ended = 7,        ///< as it should
    Succeeded = 8,    ///< an operation claims success although it had no answer
    DidNotReturn = 9, ///< an operation was cut off that should have returned
    UnknownWay = 10,
    Differs = 11, ///< a conversion gives something else at the end than before
};

/// Arguments: "--host", the way to end, the operation, the service's address.
int run(int& argc, char** argv);

} // namespace ShutdownHost
