/// A small cluster for tests of programs: prints "HOST:PORT" of its broker, and does what each line of its input says.
/// Then it prints "ok".

#include "tests/components/KafkaMock.h"

#include <iostream>
#include <sstream>
#include <string>

int main()
{
    vx::KafkaMock mock(1);
    std::cout << mock.getBrokers() << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string command, topic;
        int number = 0;
        words >> command >> topic >> number;
        rd_kafka_resp_err_t error = RD_KAFKA_RESP_ERR_NO_ERROR;
        if (command == "down")
            error = rd_kafka_mock_broker_set_down(mock.get(), 1);
        else if (command == "up")
            error = rd_kafka_mock_broker_set_up(mock.get(), 1);
        else if (command == "create") // topic, partitions
            error = rd_kafka_mock_topic_create(mock.get(), topic.c_str(), number, 1);
        else if (command == "fail") // topic, error
            rd_kafka_mock_topic_set_error(mock.get(), topic.c_str(), static_cast<rd_kafka_resp_err_t>(number));
        else if (command == "slow") // -, milliseconds
            error = rd_kafka_mock_broker_set_rtt(mock.get(), 1, number);
        else
            error = RD_KAFKA_RESP_ERR_INVALID_REQUEST;
        std::cout << (error == RD_KAFKA_RESP_ERR_NO_ERROR ? "ok" : rd_kafka_err2str(error)) << std::endl;
    }
}
