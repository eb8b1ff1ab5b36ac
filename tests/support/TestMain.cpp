#include <VoTestSupport.h>

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // A library exception that leaves a thread or a destructor would otherwise end the program without a word.
    std::set_terminate([] {
        if (std::current_exception())
            std::cerr << "terminated by: " << vo::CurrentExceptionText().toStdString() << std::endl;
        std::abort();
    });
    return RUN_ALL_TESTS();
}
