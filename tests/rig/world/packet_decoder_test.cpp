#include "rig/world/packet_decoder.h"

#include <gmock/gmock.h>

#include <random>

#include "sim/transport/packet_writer.h"

using namespace rig;
using ::testing::SizeIs;

namespace {

/// A packet as a client writes it.
class PacketBuilder {
public:
    explicit PacketBuilder(Operation operation, std::uint32_t packetId = 5) { writer_.begin(operation, packetId); }
    PacketBuilder& dwords(std::initializer_list<std::uint32_t> values) {
        for (const std::uint32_t value : values) {
            writer_.dword(value);
        }
        return *this;
    }
    PacketBuilder& text(std::string_view value, std::size_t fieldBytes) {
        writer_.text(value, fieldBytes);
        return *this;
    }
    PacketBuilder& raw(std::string_view bytes) {
        writer_.bytes(bytes);
        return *this;
    }
    PacketBuilder& float32(float value) {
        writer_.float32(value);
        return *this;
    }
    PacketBuilder& float64s(std::initializer_list<double> values) {
        for (const double value : values) {
            writer_.float64(value);
        }
        return *this;
    }
    std::string str() { return std::string(writer_.packet()); }

private:
    PacketWriter writer_;
};

template <typename Wanted>
Wanted decoded(const std::string& packet) {
    const std::optional<SentRequest> sent = decodePacket(packet);
    if (!sent || !std::holds_alternative<Wanted>(sent->request)) {
        ADD_FAILURE() << "not that request";
        return {};
    }
    EXPECT_EQ(sent->packetId, 5u);
    return std::get<Wanted>(sent->request);
}

std::string subscribePacket(std::uint32_t packetId = 5) {
    return PacketBuilder(Operation::subscribeToSystemEvent, packetId).dwords({204}).text("Frame", 256).str();
}

std::string openPacket() {
    return PacketBuilder(Operation::open)
        .text("Tarnwing", 256)
        .dwords({0})
        .raw({"\0XSF", 4})
        .dwords({10, 0, 61259, 0})
        .str();
}

} // namespace

TEST(PacketDecoder, readsEachCallsParametersInTheirOrder) {
    EXPECT_EQ(decoded<OpenRequest>(openPacket()).clientName, "Tarnwing");

    const auto map = decoded<MapClientEventRequest>(
        PacketBuilder(Operation::mapClientEvent).dwords({1}).text("GEAR_SET", 256).str());
    EXPECT_EQ(map.eventId, 1u);
    EXPECT_EQ(map.name, "GEAR_SET");

    const auto transmit = decoded<TransmitClientEventRequest>(
        PacketBuilder(Operation::transmitClientEvent).dwords({1, 2, 3, 4, 5}).str());
    EXPECT_EQ(transmit.objectId, 1u);
    EXPECT_EQ(transmit.eventId, 2u);
    EXPECT_EQ(transmit.data, 3u);
    EXPECT_EQ(transmit.groupId, 4u);
    EXPECT_EQ(transmit.flags, 5u);

    const auto group =
        decoded<AddEventToGroupRequest>(PacketBuilder(Operation::addEventToNotificationGroup).dwords({1, 2, 3}).str());
    EXPECT_EQ(group.groupId, 1u);
    EXPECT_EQ(group.eventId, 2u);
    EXPECT_EQ(group.maskable, 3u);

    const auto priority =
        decoded<GroupPriorityRequest>(PacketBuilder(Operation::setNotificationGroupPriority).dwords({1, 2}).str());
    EXPECT_EQ(priority.groupId, 1u);
    EXPECT_EQ(priority.priority, 2u);

    const auto add = decoded<AddToDefinitionRequest>(PacketBuilder(Operation::addToDataDefinition)
                                                         .dwords({1})
                                                         .text("Plane Latitude", 256)
                                                         .text("degree", 256)
                                                         .dwords({4})
                                                         .float32(0.5F)
                                                         .dwords({6})
                                                         .str());
    EXPECT_EQ(add.defineId, 1u);
    EXPECT_EQ(add.datumName, "Plane Latitude");
    EXPECT_EQ(add.unitsName, "degree");
    EXPECT_EQ(add.datumType, 4u);
    EXPECT_EQ(add.epsilon, 0.5F);
    EXPECT_EQ(add.datumId, 6u);

    const auto data = decoded<ObjectDataRequest>(
        PacketBuilder(Operation::requestDataOnObject).dwords({1, 2, 3, 4, 5, 6, 7, 8}).str());
    EXPECT_EQ(data.requestId, 1u);
    EXPECT_EQ(data.defineId, 2u);
    EXPECT_EQ(data.objectId, 3u);
    EXPECT_EQ(data.period, 4u);
    EXPECT_EQ(data.flags, 5u);
    EXPECT_EQ(data.origin, 6u);
    EXPECT_EQ(data.interval, 7u);
    EXPECT_EQ(data.limit, 8u);

    const auto byType =
        decoded<DataByTypeRequest>(PacketBuilder(Operation::requestDataOnObjectType).dwords({1, 2, 3, 4}).str());
    EXPECT_EQ(byType.requestId, 1u);
    EXPECT_EQ(byType.defineId, 2u);
    EXPECT_EQ(byType.radiusMeters, 3u);
    EXPECT_EQ(byType.objectType, 4u);

    const auto set = decoded<SetDataRequest>(
        PacketBuilder(Operation::setDataOnObject).dwords({1, 2, 3, 4, 5}).raw({"a\0b", 3}).str());
    EXPECT_EQ(set.defineId, 1u);
    EXPECT_EQ(set.objectId, 2u);
    EXPECT_EQ(set.flags, 3u);
    EXPECT_EQ(set.arrayCount, 4u);
    EXPECT_EQ(set.unitSize, 5u);
    EXPECT_EQ(set.data, std::string("a\0b", 3));

    const auto subscribe = decoded<SubscribeRequest>(subscribePacket());
    EXPECT_EQ(subscribe.eventId, 204u);
    EXPECT_EQ(subscribe.name, "Frame");

    const auto create = decoded<CreateAircraftRequest>(PacketBuilder(Operation::createNonAtcAircraft)
                                                           .text("Airliner", 256)
                                                           .text("KLM123456789", 12)
                                                           .float64s({1, 2, 3, 4, 5, 6})
                                                           .dwords({7, 8, 9})
                                                           .str());
    EXPECT_EQ(create.title, "Airliner");
    EXPECT_EQ(create.tailNumber, "KLM123456789");
    EXPECT_EQ(+create.position.Latitude, 1);
    EXPECT_EQ(+create.position.Longitude, 2);
    EXPECT_EQ(+create.position.Altitude, 3);
    EXPECT_EQ(+create.position.Pitch, 4);
    EXPECT_EQ(+create.position.Bank, 5);
    EXPECT_EQ(+create.position.Heading, 6);
    EXPECT_EQ(+create.position.OnGround, 7u);
    EXPECT_EQ(+create.position.Airspeed, 8u);
    EXPECT_EQ(create.requestId, 9u);

    const auto release = decoded<ReleaseControlRequest>(PacketBuilder(Operation::releaseControl).dwords({1, 2}).str());
    EXPECT_EQ(release.objectId, 1u);
    EXPECT_EQ(release.requestId, 2u);

    const auto remove = decoded<RemoveObjectRequest>(PacketBuilder(Operation::removeObject).dwords({1, 2}).str());
    EXPECT_EQ(remove.objectId, 1u);
    EXPECT_EQ(remove.requestId, 2u);

    const auto plan = decoded<FlightPlanRequest>(
        PacketBuilder(Operation::setAircraftFlightPlan).dwords({1}).text("C:\\1.pln", 260).dwords({2}).str());
    EXPECT_EQ(plan.objectId, 1u);
    EXPECT_EQ(plan.path, "C:\\1.pln");
    EXPECT_EQ(plan.requestId, 2u);
}

TEST(PacketDecoder, aTextWithoutAZeroFillsItsField) {
    const std::string longest(256, 'x');
    const auto map =
        decoded<MapClientEventRequest>(PacketBuilder(Operation::mapClientEvent).dwords({1}).text(longest, 256).str());
    EXPECT_EQ(map.name, longest);
}

TEST(PacketDecoder, malformedPacketsAreNone) {
    const std::string good = PacketBuilder(Operation::removeObject).dwords({1, 2}).str();
    ASSERT_TRUE(decodePacket(good));
    const auto changed = [&](std::size_t at, char byte) {
        std::string packet = good;
        packet[at] = byte;
        return packet;
    };
    EXPECT_FALSE(decodePacket(""));
    EXPECT_FALSE(decodePacket(good.substr(0, 15)));
    EXPECT_FALSE(decodePacket(changed(0, 23)));   // a size that is not its own
    EXPECT_FALSE(decodePacket(changed(4, 5)));    // another protocol
    EXPECT_FALSE(decodePacket(changed(11, 0)));   // no operation mark
    EXPECT_FALSE(decodePacket(changed(8, 0x7F))); // no such operation
    EXPECT_FALSE(decodePacket(PacketBuilder(Operation::removeObject).dwords({1}).str()));
    EXPECT_FALSE(decodePacket(PacketBuilder(Operation::removeObject).dwords({1, 2, 3}).str()));
    EXPECT_FALSE(decodePacket(PacketBuilder(Operation::setDataOnObject).dwords({1, 2, 3, 4}).str()));
}

TEST(PacketDecoder, everyPacketThatIsCutShortIsNone) {
    const std::string packets[] = {
        openPacket(),
        subscribePacket(),
        PacketBuilder(Operation::createNonAtcAircraft)
            .text("Airliner", 256)
            .text("KLM123", 12)
            .float64s({1, 2, 3, 4, 5, 6})
            .dwords({7, 8, 9})
            .str(),
    };
    for (const std::string& packet : packets) {
        for (std::size_t size = 16; size < packet.size(); ++size) {
            std::string cut = packet.substr(0, size);
            cut[0] = static_cast<char>(size & 0xFF);
            cut[1] = static_cast<char>(size >> 8 & 0xFF);
            ASSERT_FALSE(decodePacket(cut)) << size;
        }
    }
}

TEST(PacketStream, itMakesNoDifferenceHowTheBytesAreCut) {
    std::string bytes = openPacket();
    for (std::uint32_t i = 2; i < 20; ++i) {
        bytes += subscribePacket(i);
    }
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        PacketStream stream;
        std::vector<SentRequest> requests;
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t piece = 1 + random() % 700;
            ASSERT_TRUE(stream.append(std::string_view(bytes).substr(at, piece), requests));
            at += piece;
        }
        ASSERT_THAT(requests, SizeIs(19));
        ASSERT_EQ(requests.back().packetId, 19u);
    }
}

TEST(PacketStream, aSizeThatCannotBeEndsIt) {
    for (const std::string_view size : {std::string_view("\0\0\0\0", 4), std::string_view("\x0F\0\0\0", 4),
                                        std::string_view("\1\0\1\0", 4), std::string_view("\xFF\xFF\xFF\xFF", 4)}) {
        PacketStream stream;
        std::vector<SentRequest> requests;
        EXPECT_FALSE(stream.append(subscribePacket() + std::string(size), requests));
        EXPECT_THAT(requests, SizeIs(1));
        EXPECT_FALSE(stream.append(subscribePacket(), requests));
        EXPECT_THAT(requests, SizeIs(1));
    }
}
