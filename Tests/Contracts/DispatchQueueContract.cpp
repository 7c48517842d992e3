#include "Contracts/DispatchHosts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tallyfoot::testing {

namespace {

using ::testing::ElementsAre;

class DispatchQueueContract : public ::testing::TestWithParam<Implementation<DispatchHost>> {
protected:
    std::shared_ptr<DispatchQueue> makeQueue(const char* label = "queue") { return host_->dispatch().makeQueue(label); }
    // Everything that this thread gave to the queue has run afterwards.
    static void finish(DispatchQueue& queue) {
        queue.sync([] {});
    }

    std::shared_ptr<DispatchHost> host_ = GetParam().make();
    std::shared_ptr<DispatchQueue> queue_ = makeQueue();
};

void onThreads(int count, const std::function<void(int)>& body) {
    std::vector<std::thread> threads;
    for (int index = 0; index < count; ++index) threads.emplace_back(body, index);
    for (auto& thread : threads) thread.join();
}

TEST_P(DispatchQueueContract, KeepsItsLabel) {
    EXPECT_EQ(makeQueue("com.repeat.queue, and a long text behind it")->label(),
              "com.repeat.queue, and a long text behind it");
}

TEST_P(DispatchQueueContract, SyncRunsOnTheCallersThreadBeforeItReturns) {
    std::thread::id ranOn;
    queue_->sync([&] { ranOn = std::this_thread::get_id(); });
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_P(DispatchQueueContract, IsCurrentInsideItsBlocksOnly) {
    const auto other = makeQueue("other");
    EXPECT_FALSE(queue_->isCurrent());
    queue_->sync([&] {
        EXPECT_TRUE(queue_->isCurrent());
        EXPECT_FALSE(other->isCurrent());
    });
    bool insideAsync = false;
    queue_->async([&] { insideAsync = queue_->isCurrent(); });
    finish(*queue_);
    EXPECT_TRUE(insideAsync);
    EXPECT_FALSE(queue_->isCurrent());
}

TEST_P(DispatchQueueContract, IsNotCurrentOnOtherThreads) {
    queue_->sync([&] { std::thread([&] { EXPECT_FALSE(queue_->isCurrent()); }).join(); });
}

TEST_P(DispatchQueueContract, ASyncInsideTheTurnRunsAtOnce) {
    std::vector<int> order;
    queue_->sync([&] {
        order.push_back(1);
        queue_->sync([&] {
            order.push_back(2);
            queue_->sync([&] { order.push_back(3); });
        });
        EXPECT_TRUE(queue_->isCurrent());
        order.push_back(4);
    });
    EXPECT_FALSE(queue_->isCurrent());
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));
}

TEST_P(DispatchQueueContract, ASyncInsideAnAsyncBlockRunsAtOnce) {
    std::vector<int> order;
    queue_->async([&] {
        order.push_back(1);
        queue_->sync([&] { order.push_back(2); });
        order.push_back(3);
    });
    finish(*queue_);
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_P(DispatchQueueContract, AnAsyncInsideTheTurnRunsAfterIt) {
    std::vector<int> order;
    queue_->sync([&] {
        queue_->async([&] { order.push_back(2); });
        queue_->sync([&] { order.push_back(1); });
    });
    finish(*queue_);
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST_P(DispatchQueueContract, AsyncBlocksRunInTheirOrder) {
    std::vector<int> order;
    std::vector<int> expected;
    for (int number = 0; number < 1000; ++number) {
        queue_->async([&order, number] { order.push_back(number); });
        expected.push_back(number);
    }
    finish(*queue_);
    EXPECT_EQ(order, expected);
}

TEST_P(DispatchQueueContract, ASyncFollowsTheAsyncBlocksOfItsThread) {
    std::vector<int> order;
    for (int round = 0; round < 200; ++round) {
        queue_->async([&] { order.push_back(3 * round); });
        queue_->async([&] { order.push_back(3 * round + 1); });
        queue_->sync([&] { order.push_back(3 * round + 2); });
    }
    for (std::size_t index = 0; index < order.size(); ++index) ASSERT_EQ(order[index], static_cast<int>(index));
    EXPECT_EQ(order.size(), 600U);
}

TEST_P(DispatchQueueContract, TheBlocksOfEachOfSeveralThreadsKeepTheirOrder) {
    constexpr int threads = 8;
    constexpr int each = 500;
    std::vector<std::vector<int>> orders(threads);
    onThreads(threads, [&](int index) {
        auto& order = orders[static_cast<std::size_t>(index)];
        for (int number = 0; number < each; ++number) {
            if (number % 3 == 0)
                queue_->async([&order, number] { order.push_back(number); });
            else
                queue_->sync([&] { order.push_back(number); });
        }
    });
    finish(*queue_);
    for (const auto& order : orders) {
        ASSERT_EQ(order.size(), static_cast<std::size_t>(each));
        for (std::size_t number = 0; number < order.size(); ++number)
            ASSERT_EQ(order[number], static_cast<int>(number));
    }
}

TEST_P(DispatchQueueContract, AtMostOneBlockRunsAtATime) {
    constexpr int threads = 16;
    constexpr int each = 2000;
    int counter = 0; // guarded by nothing but the turn
    bool isInside = false;
    bool overlapped = false;
    const auto block = [&] {
        overlapped = overlapped || isInside;
        isInside = true;
        ++counter;
        isInside = false;
    };
    onThreads(threads, [&](int) {
        for (int number = 0; number < each; ++number) {
            if (number % 16 == 0)
                queue_->async(block);
            else
                queue_->sync(block);
        }
    });
    finish(*queue_);
    EXPECT_EQ(counter, threads * each);
    EXPECT_FALSE(overlapped);
}

TEST_P(DispatchQueueContract, AnAsyncBlockIsNotStarvedByAStreamOfSyncs) {
    std::atomic<bool> ran{false};
    std::atomic<bool> enqueued{false};
    std::atomic<int> late{0};
    onThreads(4, [&](int index) {
        for (int number = 0; number < 1000 || !ran; ++number) {
            if (index == 0 && number == 100) {
                queue_->async([&] { ran = true; });
                enqueued = true;
            }
            const bool wasEnqueued = enqueued;
            queue_->sync([&] {
                if (wasEnqueued && !ran) ++late;
            });
        }
    });
    EXPECT_TRUE(ran);
    EXPECT_EQ(late, 0) << "a sync overtook a block that waited before it came";
}

TEST_P(DispatchQueueContract, BlocksWaitingWhenTheQueueIsReleasedRunAllTheSame) {
    Occurrences ran;
    queue_->sync([&] {
        for (int number = 0; number < 10; ++number) queue_->async([&] { ran.add(); });
    });
    queue_.reset();
    EXPECT_TRUE(host_->waitFor(ran, 10));
}

TEST_P(DispatchQueueContract, CanBeReleasedFromItsOwnAsyncBlock) {
    Occurrences ran;
    DispatchQueue& queue = *queue_;
    queue.async([&ran, last = std::move(queue_)]() mutable {
        auto& current = *last;
        current.async([&ran] { ran.add(); });
        last.reset();
        ran.add();
    });
    EXPECT_TRUE(host_->waitFor(ran, 2));
}

TEST_P(DispatchQueueContract, CanBeReleasedFromItsOwnSyncBlock) {
    Occurrences ran;
    DispatchQueue& queue = *queue_;
    queue.sync([&] {
        queue.async([&] { ran.add(); });
        queue_.reset();
        ran.add();
    });
    EXPECT_TRUE(host_->waitFor(ran, 2));
}

TEST_P(DispatchQueueContract, CanBeReleasedInsideTheTurnOfAnother) {
    Occurrences ran;
    auto other = makeQueue("other");
    for (int number = 0; number < 100; ++number)
        other->async([&ran, queue = queue_] { queue->sync([&ran] { ran.add(); }); });
    queue_->sync([&] { other.reset(); });
    EXPECT_TRUE(host_->waitFor(ran, 100));
}

TEST_P(DispatchQueueContract, ABlockIsReleasedBeforeALaterSyncRuns) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    queue_->async([held = std::move(held)] { (void)held; });
    bool isGone = false;
    queue_->sync([&] { isGone = watched.expired(); });
    EXPECT_TRUE(isGone);
}

TEST_P(DispatchQueueContract, QueuesDoNotWaitForEachOther) {
    const auto other = makeQueue("other");
    bool ran = false;
    queue_->sync([&] { std::thread([&] { other->sync([&] { ran = true; }); }).join(); });
    EXPECT_TRUE(ran);
}

TEST_P(DispatchQueueContract, ManyQueuesComeAndGo) {
    Occurrences ran;
    for (int number = 0; number < 200; ++number) makeQueue("short-lived")->async([&] { ran.add(); });
    EXPECT_TRUE(host_->waitFor(ran, 200));
}

INSTANTIATE_TEST_SUITE_P(All, DispatchQueueContract,
                         ::testing::Values(posixDispatch(), manualDispatch(), manualDispatchWithRealQueues()),
                         nameOfImplementation);

} // namespace

} // namespace tallyfoot::testing
