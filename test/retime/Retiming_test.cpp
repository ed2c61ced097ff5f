// The public door: parameters, worlds, the whole engine against its plain form, the cache and its disk records.
#include <filesystem>
#include <fstream>
#include <memory>

#include "RK/indep/retime/RK_AdvancedFrameBlending.h"
#include "RK/indep/retime/RK_VectorCache.h"
#include "RK/indep/world/RK_World.h"
#include "refhost/RefHostStash.h"
#include "test/plain/retime/PlainRetime.h"
#include "test/retime/RetimeTest.h"

using namespace retime_test;

namespace {

template <class P>
struct Frames {
    test::Picture<P> first, second, out;
    std::unique_ptr<RK_World> worlds[3];
    plain::Grid<plain::Px> g1, g2;
    static constexpr float kFull = sizeof(P) == 4 ? 255.0f : sizeof(P) == 8 ? 32768.0f : 1.0f;

    Frames(int w, int h, float dx = 4, float dy = -2) : first(w, h), second(w, h), out(w, h) {
        const plain::Grid<float> red = texture(w, h, 0, 0, 1), green = texture(w, h, 0, 0, 2);
        const plain::Grid<float> red2 = texture(w, h, dx, dy, 1), green2 = texture(w, h, dx, dy, 2);
        paint(first, g1, red, green);
        paint(second, g2, red2, green2);
        test::Picture<P>* pictures[3] = {&first, &second, &out};
        for (int i = 0; i < 3; ++i) {
            const RK_LayerDef r = pictures[i]->record();
            worlds[i].reset(RK_World::NewReference(r.data, r.width, r.height, int16_t(test::kDepth<P>), r.rowbytes));
        }
    }
    static void paint(test::Picture<P>& picture, plain::Grid<plain::Px>& grid, const plain::Grid<float>& red,
                      const plain::Grid<float>& green) {
        using C = decltype(P::red);
        grid = plain::Grid<plain::Px>(red.w, red.h);
        grid.edge = 'c';
        for (int y = 0; y < red.h; ++y)
            for (int x = 0; x < red.w; ++x) {
                const P p = {C(kFull), C(red.at(x, y) * kFull), C(green.at(x, y) * kFull), C(0.5f * kFull)};
                picture.at(x, y) = p;
                grid.at(x, y) = {float(p.alpha), float(p.red), float(p.green), float(p.blue)};
            }
    }
    RK_Long render(RK_AdvancedFrameBlending engine) {
        return engine.Render(worlds[0].get(), worlds[1].get(), worlds[2].get());
    }
    int differ(const plain::Grid<plain::Px>& expected) const {
        int count = 0;
        for (int y = 0; y < expected.h; ++y)
            for (int x = 0; x < expected.w; ++x) {
                const P& p = out.at(x, y);
                const float c[4] = {float(p.alpha), float(p.red), float(p.green), float(p.blue)};
                for (size_t i = 0; i < 4; ++i) count += c[i] != expected.at(x, y)[i];
            }
        return count;
    }
};

RK_Quillon_OtherParams at(double position, STASH_SortDir* dir = nullptr, int32_t time = 0) {
    return {{0, 25}, {1, 25}, {time, 25}, {time + 1, 25}, position, dir, 7};
}
// The defaults as a caller gives them: percentages where those are told.
RK_Quillon_AlgoParams percentages() {
    RK_Quillon_AlgoParams a;
    a.vectorDetail = 20;
    a.errorThreshold = 1;
    a.lumaRed = 29.88804, a.lumaGreen = 58.676529, a.lumaBlue = 11.435428;
    return a;
}
const RK_Quillon_InterruptFuncs kNoInterrupt = {nullptr, nullptr};

class SortDir {
  public:
    explicit SortDir(const char* name = "") : dir_(STASH_NewSortDir(name)) {}
    ~SortDir() { STASH_DisposeSortDir(dir_); }
    operator STASH_SortDir*() const { return dir_; }

  private:
    STASH_SortDir* dir_;
};

TEST(Retiming, DefaultsAreInRangeAndEachFieldIsChecked) {
    EXPECT_EQ(RK_AdvancedFrameBlending(at(0.5), kNoInterrupt).CheckParamRange(), 0);
    EXPECT_EQ(RK_AdvancedFrameBlending(percentages(), at(0.5), kNoInterrupt).CheckParamRange(), 0);
    auto check = [](auto&& change) {
        RK_Quillon_AlgoParams a = percentages();
        change(a);
        return RK_AdvancedFrameBlending(a, at(0.5), kNoInterrupt).CheckParamRange();
    };
    using A = RK_Quillon_AlgoParams;
    EXPECT_EQ(check([](A& a) { a.method = 3; }), 514);
    EXPECT_EQ(check([](A& a) { a.method = -1; }), 514);
    EXPECT_EQ(check([](A& a) { a.vectorDetail = 5; }), 514);  // 5 * 0.01 in float is below 0.05
    EXPECT_EQ(check([](A& a) { a.vectorDetail = 5.0001f; }), 0);
    EXPECT_EQ(check([](A& a) { a.vectorDetail = 101; }), 514);
    EXPECT_EQ(check([](A& a) { a.vectorDetail = NAN; }), 514);
    EXPECT_EQ(check([](A& a) { a.estimateSmoothness = 1001; }), 514);
    EXPECT_EQ(check([](A& a) { a.tweenSmoothness = -1001; }), 514);
    EXPECT_EQ(check([](A& a) { a.smoothPasses = 0; }), 514);
    EXPECT_EQ(check([](A& a) { a.smoothPasses = 51; }), 514);
    EXPECT_EQ(check([](A& a) { a.errorThreshold = -1; }), 514);
    EXPECT_EQ(check([](A& a) { a.errorThreshold = 11; }), 514);
    EXPECT_EQ(check([](A& a) { a.sincSampling = 2; }), 514);
    EXPECT_EQ(check([](A& a) { a.blockSize = 3; }), 514);
    EXPECT_EQ(check([](A& a) { a.blockSize = 41; }), 514);
    EXPECT_EQ(check([](A& a) { a.lumaRed = -1; }), 514);
    EXPECT_EQ(check([](A& a) { a.lumaRed = 30, a.lumaGreen = 30, a.lumaBlue = 37; }), 514);
    EXPECT_EQ(check([](A& a) { a.lumaRed = 30, a.lumaGreen = 30, a.lumaBlue = 39; }), 0);
    EXPECT_EQ(check([](A& a) { a.lumaRed = 0.5, a.lumaGreen = NAN; }), 514);
    EXPECT_EQ(check([](A& a) { a.shutterAngle = 361; }), 514);
    EXPECT_EQ(check([](A& a) { a.shutterSamples = 0; }), 514);
    EXPECT_EQ(check([](A& a) { a.shutterSamples = 21; }), 514);
    EXPECT_EQ(check([](A& a) { a.algoReserved = 4; }), 514);
}

TEST(Retiming, RefusesWhatItCannotRenderAndDrawsNothing) {
    Frames<RK_Pixel8> f(20, 12);
    Frames<RK_Pixel16> other(20, 12);
    RK_AdvancedFrameBlending engine(at(0.5), kNoInterrupt);
    EXPECT_EQ(engine.Render(nullptr, f.worlds[1].get(), f.worlds[2].get()), 514);
    EXPECT_EQ(engine.Render(f.worlds[0].get(), nullptr, f.worlds[2].get()), 514);
    EXPECT_EQ(engine.Render(f.worlds[0].get(), f.worlds[1].get(), nullptr), 514);
    EXPECT_EQ(engine.Render(f.worlds[0].get(), other.worlds[1].get(), f.worlds[2].get()), 514);
    void* const data = f.worlds[0]->record.data;
    f.worlds[0]->record.data = nullptr;
    EXPECT_EQ(f.render(engine), 514);
    f.worlds[0]->record.data = data;
    f.worlds[1]->record.width = 0;
    EXPECT_EQ(f.render(engine), 0);
    EXPECT_EQ(f.differ(plain::Grid<plain::Px>(20, 12)), 0);
}

template <class P>
void compareWhole(int w, int h, plain::RetimeSettings s, RK_Quillon_AlgoParams a) {
    Frames<P> f(w, h);
    s.full = Frames<P>::kFull;
    s.sinc = a.sincSampling != 0;
    for (s.threads = 1; s.threads <= 3; ++s.threads) {
        Threads threads(s.threads);
        ASSERT_EQ(f.render(RK_AdvancedFrameBlending(a, at(s.position), kNoInterrupt)), 0);
        ASSERT_EQ(f.differ(plain::retime(f.g1, f.g2, s)), 0) << w << "x" << h << " threads " << s.threads;
        ASSERT_TRUE(f.out.guardsWhole());
    }
}

TEST(Retiming, TheWholeEngineAgreesWithItsPlainForm) {
    plain::RetimeSettings s;
    RK_Quillon_AlgoParams a = percentages();
    s.detail = 20 * 0.01f, s.threshold = 1 * 0.01f;
    compareWhole<RK_Pixel8>(160, 100, s, a);
    s.position = 0.2;
    a.vectorDetail = 50, s.detail = 50 * 0.01f;
    compareWhole<RK_Pixel16>(71, 48, s, a);
    a.sincSampling = 1;
    a.tweenSmoothness = s.tweenSmoothness = -20;
    a.estimateSmoothness = s.estimateSmoothness = -100;
    a.blockSize = 8, s.block = 8;
    a.smoothPasses = 3, s.passes = 3;
    compareWhole<RK_PixelFloat>(64, 40, s, a);
    for (const auto& size : {std::pair<int, int>{1, 1}, {7, 3}, {2, 30}}) compareWhole<RK_Pixel8>(size.first, size.second, s, a);
}

TEST(Retiming, FollowsAPanBetterThanBlending) {
    Frames<RK_Pixel8> f(160, 100, 6, 4);
    Frames<RK_Pixel8> truth(160, 100, 3, 2);
    auto error = [&] {
        double sum = 0;
        for (int y = 20; y < 80; ++y)
            for (int x = 20; x < 140; ++x) {
                const double d = f.out.at(x, y).red - truth.second.at(x, y).red;
                sum += d * d;
            }
        return sum;
    };
    RK_Quillon_AlgoParams a = percentages();
    a.vectorDetail = 100;
    ASSERT_EQ(f.render(RK_AdvancedFrameBlending(a, at(0.5), kNoInterrupt)), 0);
    const double motion = error();
    a.method = RK_kBlendFrames;
    ASSERT_EQ(f.render(RK_AdvancedFrameBlending(a, at(0.5), kNoInterrupt)), 0);
    EXPECT_LT(motion * 10, error());
}

TEST(Retiming, TheSimpleMethodsTakeThePositionAsItStands) {
    Frames<RK_Pixel8> f(20, 12);
    RK_Quillon_AlgoParams a = percentages();
    a.method = RK_kNearestFrame;
    for (const auto& c : {std::pair<double, int>{0.5, 1}, {0.51, 2}, {1.0, 2}, {-4, 1}}) {
        ASSERT_EQ(f.render(RK_AdvancedFrameBlending(a, at(c.first), kNoInterrupt)), 0);
        EXPECT_EQ(f.differ(c.second == 1 ? f.g1 : f.g2), 0) << c.first;
    }
    a.method = RK_kBlendFrames;
    ASSERT_EQ(f.render(RK_AdvancedFrameBlending(a, at(1.0), kNoInterrupt)), 0);
    EXPECT_EQ(f.differ(f.g2), 0);
}

TEST(Retiming, AFrameTimeCopiesAFrameAndStillFillsTheCache) {
    Frames<RK_Pixel8> f(40, 24);
    SortDir dir;
    for (const auto& c : {std::pair<double, int>{0.0, 1}, {1.0, 1}, {0.0024, 1}, {0.998, 2}, {-0.25, 2}}) {
        ASSERT_EQ(f.render(RK_AdvancedFrameBlending(at(c.first, dir), kNoInterrupt)), 0);
        EXPECT_EQ(f.differ(c.second == 1 ? f.g1 : f.g2), 0) << c.first;
    }
    EXPECT_EQ(RefHost::Stash().entries, 1);
}

TEST(Retiming, ShutterSamplesAverageOneInstant) {
    Frames<RK_Pixel8> one(60, 40), four(60, 40), still(60, 40);
    RK_Quillon_AlgoParams a = percentages();
    ASSERT_EQ(one.render(RK_AdvancedFrameBlending(a, at(0.5), kNoInterrupt)), 0);
    a.shutterSamples = 4;
    ASSERT_EQ(four.render(RK_AdvancedFrameBlending(a, at(0.5), kNoInterrupt)), 0);
    EXPECT_TRUE(one.out == four.out);
    a.shutterAngle = 0;  // no accumulator
    const RefHost::MemoryUse before = RefHost::Memory();
    ASSERT_EQ(still.render(RK_AdvancedFrameBlending(a, at(0.5), kNoInterrupt)), 0);
    EXPECT_TRUE(one.out == still.out);
    EXPECT_EQ(RefHost::Memory().blocks, before.blocks);
}

TEST(Retiming, SourcesOfAnotherSizeAreReadUpToTheirEdges) {
    Frames<RK_Pixel8> f(60, 40), small(30, 50);
    RK_AdvancedFrameBlending engine(at(0.5), kNoInterrupt);
    EXPECT_EQ(engine.Render(f.worlds[0].get(), small.worlds[1].get(), f.worlds[2].get()), 0);
    EXPECT_EQ(engine.Render(small.worlds[0].get(), f.worlds[1].get(), f.worlds[2].get()), 0);
    EXPECT_EQ(engine.Render(f.worlds[0].get(), f.worlds[1].get(), small.worlds[2].get()), 0);
    EXPECT_TRUE(f.out.guardsWhole());
    EXPECT_TRUE(small.out.guardsWhole());
}

TEST(Retiming, CopiesAreWhole) {
    RK_Quillon_AlgoParams a = percentages();
    a.blockSize = 9;
    RK_AdvancedFrameBlending one(a, at(0.5), kNoInterrupt), two(at(0.1), kNoInterrupt);
    two = one;
    EXPECT_EQ(two.Algorithm().blockSize, 9);
}

// ---- Failure --------------------------------------------------------------------------------------------

TEST(Retiming, EveryCheckStopsItWithTheCallbacksAnswer) {
    Threads one(1);
    Frames<RK_Pixel8> f(48, 40);
    RK_Quillon_AlgoParams a = percentages();
    a.smoothPasses = 1;
    a.shutterSamples = 2;
    int stops = 0;
    for (int stop = 0;; stop += 1 + stop / 40, ++stops) {
        Stopper stopper{stop, 77};
        const RefHost::MemoryUse before = RefHost::Memory();
        const RK_Long code = f.render(RK_AdvancedFrameBlending(a, at(0.5), {Stopper::Call, &stopper}));
        ASSERT_EQ(RefHost::Memory().blocks, before.blocks);
        if (stopper.answers >= 0) {
            EXPECT_EQ(code, 0);
            break;
        }
        ASSERT_EQ(code, 77);
        ASSERT_EQ(stopper.answers, -1);
    }
    EXPECT_GT(stops, 50);
}

TEST(Retiming, EveryFailedAllocationGivesFourOrAThousand) {
    Threads one(1);
    Frames<RK_Pixel8> f(48, 40);
    RK_Quillon_AlgoParams a = percentages();
    a.vectorDetail = 50;
    a.shutterSamples = 2;
    SortDir dir;
    RK_Long code = 0;
    int32_t time = 0;
    int64_t kept = 0;
    auto render = [&] { code = f.render(RK_AdvancedFrameBlending(a, at(0.5, dir, ++time), kNoInterrupt)); };
    int failures = 0;
    for (int n = 1;; ++n) {
        RefHost::PurgeStash();
        const int64_t before = RefHost::Memory().blocks;
        RefHost::FailAllocation(n);
        render();
        const bool struck = RefHost::AllocationsSince() >= n;
        RefHost::FailAllocation(0);
        RefHost::PurgeStash();
        kept = RefHost::Memory().blocks - before;  // the empty entry of a pair that was estimated
        ASSERT_TRUE(kept == 0 || kept == 1) << n << ": " << kept;
        if (!struck) break;
        ++failures;
        ASSERT_TRUE(code == 4 || code == 1000) << n << ": " << code;
    }
    EXPECT_EQ(code, 0);
    EXPECT_GT(failures, 100);
}

// ---- The cache ------------------------------------------------------------------------------------------

TEST(VectorCache, ASecondRenderOfAPairTakesTheFieldsFromTheCache) {
    Frames<RK_Pixel8> f(60, 40), again(60, 40);
    SortDir dir;
    const RefHost::StashUse before = RefHost::Stash();
    ASSERT_EQ(f.render(RK_AdvancedFrameBlending(at(0.5, dir), kNoInterrupt)), 0);
    EXPECT_EQ(RefHost::Stash().misses, before.misses + 1);
    RK_Quillon_AlgoParams a = percentages();
    a.vectorDetail = 90;  // the entry knows nothing of parameters
    ASSERT_EQ(again.render(RK_AdvancedFrameBlending(a, at(0.5, dir), kNoInterrupt)), 0);
    EXPECT_EQ(RefHost::Stash().hits, before.hits + 1);
    EXPECT_TRUE(f.out == again.out);
    ASSERT_EQ(again.render(RK_AdvancedFrameBlending(at(0.5, dir, 5), kNoInterrupt)), 0);
    EXPECT_EQ(RefHost::Stash().entries, before.entries + 2);
}

TEST(VectorCache, AHolderInUseOutlivesAPurge) {
    Frames<RK_Pixel8> f(60, 40), pure(60, 40);
    ASSERT_EQ(pure.render(RK_AdvancedFrameBlending(at(0.5), kNoInterrupt)), 0);
    SortDir dir;
    RefHost::SetStashLimit(1);  // the entry is purged as soon as it is added
    ASSERT_EQ(f.render(RK_AdvancedFrameBlending(at(0.5, dir), kNoInterrupt)), 0);
    RefHost::SetStashLimit(int64_t{512} << 20);
    EXPECT_TRUE(f.out == pure.out);
    // And in the middle of one: the callback purges.
    ASSERT_EQ(f.render(RK_AdvancedFrameBlending(at(0.5, dir), kNoInterrupt)), 0);
    auto purge = [](void*) -> RK_Long {
        RefHost::PurgeStash();
        return 0;
    };
    ASSERT_EQ(f.render(RK_AdvancedFrameBlending(at(0.5, dir), {purge, nullptr})), 0);
    EXPECT_TRUE(f.out == pure.out);
}

RKp_HolderRef MakeHolder(int w, int h) {
    RKp_HolderRef holder(new FnMotionEstimateMapStackHolder);
    holder->width = w, holder->height = h;
    holder->first_luminance = new FnFloatMap(w, h);
    holder->second_luminance = new FnFloatMap(w, h);
    holder->first_luminance->SetEdgeModes(kFnClamp, kFnClamp);
    holder->first_field.Resize(w, h);
    holder->second_field.Resize(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) holder->first_field.Row(y)[x] = {float(x) + 0.25f, float(y)};
    return holder;
}

TEST(VectorCache, OrdersBySecondsAndTellsItsSize) {
    const RK_QuillonCache_Stuff a(1, {1, 2}, {3, 4}, RKp_HolderRef()), b(2, {2, 4}, {3, 4}, MakeHolder(10, 5)),
        c(1, {1, 2}, {4, 4}, RKp_HolderRef()), d(1, {INT32_MAX, 1}, {0, 1}, MakeHolder(0, 0));
    EXPECT_FALSE(a.IsLess(b) || b.IsLess(a));
    EXPECT_TRUE(a.IsLess(c) && !c.IsLess(a));
    EXPECT_TRUE(c.IsLess(d) && !d.IsLess(c));
    EXPECT_EQ(a.SizeInBytes(), 0);
    EXPECT_EQ(b.SizeInBytes(), (50 + 34) * 24);
    d.holder->width = d.holder->height = 30000;
    EXPECT_EQ(d.SizeInBytes(), INT32_MAX);
    struct Foreign : STASH_Stuff {
        bool IsLess(const STASH_Stuff&) const override { return false; }
        int32_t SizeInBytes() const override { return 0; }
        bool Purge() override { return false; }
        bool IsLoaded() const override { return true; }
        bool CanWriteToDisk() const override { return false; }
        void WriteToDisk(DSK_File*) const override {}
        void ReadFromDisk(DSK_File*) override {}
        size_t DiskIdentity(uint8_t*, size_t) const override { return 0; }
        STASH_Stuff* NewLike() const override { return nullptr; }
    } foreign;
    RefHost::TakeReports();
    EXPECT_THROW(a.IsLess(foreign), RK_Long);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].text, "Stuff should be Quillon Cache Stuff");
    EXPECT_EQ(reports[0].severity, 8);
    RK_QuillonCache_Stuff full(1, {0, 1}, {0, 1}, MakeHolder(2, 2));
    EXPECT_TRUE(full.Purge());
    EXPECT_FALSE(full.Purge());
    EXPECT_FALSE(full.IsLoaded());
}

class Folder {
  public:
    // One of this process's own: suites run side by side.
    explicit Folder(const char* name)
        : path(std::filesystem::temp_directory_path() / (name + std::to_string(getpid()))) {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::string file(const char* name) const { return (path / name).string(); }
    std::vector<std::string> files() const {
        std::vector<std::string> out;
        for (const auto& f : std::filesystem::directory_iterator(path)) out.push_back(f.path().string());
        return out;
    }
    std::filesystem::path path;
};

std::vector<unsigned char> bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
void putBytes(const std::string& path, const std::vector<unsigned char>& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}
RK_Long writeRecord(const RK_QuillonCache_Stuff& stuff, const std::string& path) {
    DSK_File* file = nullptr;
    if (DSK_CreateWhole(path.c_str(), &file) != 0) return 3;
    stuff.WriteToDisk(file);
    return DSK_Close(file, true);
}
RK_Long readRecord(RK_QuillonCache_Stuff& stuff, const std::string& path) {
    DSK_File* file = nullptr;
    if (const RK_Long code = DSK_OpenToRead(path.c_str(), &file)) return code;
    RK_Long code = 0;
    try {
        stuff.ReadFromDisk(file);
    } catch (RK_Long thrown) {
        code = thrown;
    }
    DSK_Close(file, false);
    return code;
}

TEST(VectorCache, TheDiskRecordHasItsLayoutAndComesBack) {
    Folder folder("rk-record-test");
    const std::string path = folder.file("record");
    RK_QuillonCache_Stuff stuff(1, {0, 1}, {1, 1}, MakeHolder(5, 3));
    stuff.holder->second_field.SetRanges(1, 3, 0, 2);
    stuff.holder->second_field.SetEdgeModes(kFnWrap, kFnMirror);
    stuff.holder->second_field.SetFloatOrigins(2.5f, -1.0f);
    ASSERT_EQ(writeRecord(stuff, path), 0);
    const auto bytes = bytesOf(path);
    ASSERT_EQ(bytes.size(), size_t(216 + 2 * 5 * 3 * 8));
    auto word = [&](size_t at) { return uint32_t(bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16) | uint32_t(bytes[at + 3]) << 24; };
    EXPECT_EQ(word(0), 5u);
    EXPECT_EQ(word(4), 3u);
    EXPECT_EQ(word(8), 20u);    // row bytes of a luminance map
    EXPECT_EQ(word(20), 1u);    // its edge mode on x
    EXPECT_EQ(word(112), 40u);  // row bytes of a vector map
    EXPECT_EQ(word(164 + 4 + 4), 0x40200000u);  // 2.5
    EXPECT_EQ(word(164 + 12), 3u);
    EXPECT_EQ(word(164 + 16), 1u);
    EXPECT_EQ(word(216 + 8), 0x3FA00000u);  // 1.25
    RK_QuillonCache_Stuff back(1, {0, 1}, {1, 1}, RKp_HolderRef());
    ASSERT_EQ(readRecord(back, path), 0);
    EXPECT_TRUE(back.holder->lacks_luminance);
    EXPECT_EQ(back.holder->first_luminance->Width(), 5);
    EXPECT_EQ(back.holder->first_luminance->axis[1].edge_mode, kFnClamp);
    EXPECT_EQ(back.holder->first_field.Row(2)[4], (HvVec2{4.25f, 2}));
    EXPECT_EQ(back.holder->second_field.axis[0].count, 3);
    EXPECT_EQ(back.holder->second_field.axis[0].int_origin, 3);
    const std::string again = folder.file("again");
    ASSERT_EQ(writeRecord(back, again), 0);
    EXPECT_EQ(bytesOf(again), bytes);
}

TEST(VectorCache, RecordsThatCannotBeAreRefusedAndLeaveNoHolder) {
    Folder folder("rk-fuzz-test");
    const std::string path = folder.file("record"), bad = folder.file("bad");
    RK_QuillonCache_Stuff stuff(1, {0, 1}, {1, 1}, MakeHolder(5, 3));
    ASSERT_EQ(writeRecord(stuff, path), 0);
    const auto bytes = bytesOf(path);
    const RefHost::MemoryUse before = RefHost::Memory();
    for (size_t cut = 0; cut < bytes.size(); cut += cut < 230 ? 1 : 37) {
        putBytes(bad, {bytes.begin(), bytes.begin() + std::ptrdiff_t(cut)});
        RK_QuillonCache_Stuff back(1, {0, 1}, {1, 1}, RKp_HolderRef());
        ASSERT_EQ(readRecord(back, bad), 3) << cut;
        ASSERT_FALSE(back.IsLoaded());
    }
    test::Random r(3);
    int refused = 0;
    for (int i = 0; i < 4000; ++i) {
        auto changed = bytes;
        const size_t at = r.below(4) == 0 ? r.below(8) : r.below(216);
        changed[at] = uint8_t(r.next());
        if (r.below(3) == 0) changed[at / 4 * 4 + 3] = uint8_t(r.next());
        putBytes(bad, changed);
        RK_QuillonCache_Stuff back(1, {0, 1}, {1, 1}, RKp_HolderRef());
        const RK_Long code = readRecord(back, bad);
        ASSERT_TRUE(code == 0 || code == 3);
        ASSERT_EQ(back.IsLoaded(), code == 0);
        refused += code != 0;
    }
    EXPECT_GT(refused, 2000);
    for (const size_t at : {size_t{12}, size_t{20}, size_t{24}, size_t{28}}) {  // size, mode, first, last of x
        auto changed = bytes;
        changed[at] = 9;
        putBytes(bad, changed);
        RK_QuillonCache_Stuff back(1, {0, 1}, {1, 1}, RKp_HolderRef());
        EXPECT_EQ(readRecord(back, bad), 3) << at;
    }
    for (int n = 1; n <= 9; ++n) {
        RK_QuillonCache_Stuff back(1, {0, 1}, {1, 1}, RKp_HolderRef());
        RefHost::FailAllocation(n);
        const RK_Long code = readRecord(back, path);
        const bool struck = RefHost::AllocationsSince() >= n;
        RefHost::FailAllocation(0);
        EXPECT_EQ(code, struck ? 4 : 0) << n;
        EXPECT_EQ(back.IsLoaded(), !struck);
    }
    EXPECT_EQ(RefHost::Memory().blocks, before.blocks);
}

TEST(VectorCache, ASecondRunFindsItsFieldsOnTheDiskAndMakesTheSamePicture) {
    Folder folder("rk-stash-test");
    Frames<RK_Pixel8> f(60, 40), again(60, 40), damaged(60, 40);
    RefHost::SetStashFolder(folder.path.string());
    {
        SortDir dir("clip 1");
        ASSERT_EQ(f.render(RK_AdvancedFrameBlending(at(0.5, dir), kNoInterrupt)), 0);
    }
    ASSERT_EQ(folder.files().size(), 1u);
    const std::string path = folder.files()[0];
    const auto bytes = bytesOf(path);
    const RefHost::StashUse before = RefHost::Stash();
    {
        SortDir dir("clip 1");
        ASSERT_EQ(again.render(RK_AdvancedFrameBlending(at(0.5, dir), kNoInterrupt)), 0);
        EXPECT_EQ(RefHost::Stash().disk_reads, before.disk_reads + 1);
        RefHost::PurgeStash();  // and back from the disk once more
        ASSERT_EQ(again.render(RK_AdvancedFrameBlending(at(0.5, dir), kNoInterrupt)), 0);
        EXPECT_EQ(RefHost::Stash().disk_reads, before.disk_reads + 2);
    }
    EXPECT_TRUE(f.out == again.out);
    RefHost::TakeReports();
    for (const bool cut : {true, false}) {
        auto changed = bytes;
        if (cut)
            changed.resize(changed.size() / 2);
        else
            changed[400] ^= 1;
        putBytes(path, changed);
        SortDir dir("clip 1");
        ASSERT_EQ(damaged.render(RK_AdvancedFrameBlending(at(0.5, dir), kNoInterrupt)), 0);
        EXPECT_TRUE(f.out == damaged.out);
        const auto reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_NE(reports[0].text.find("Damaged cache file"), std::string::npos);
    }
    RefHost::SetStashFolder("");
    // The record was written anew; only the footer's cost may differ.
    const auto anew = bytesOf(path);
    ASSERT_EQ(anew.size(), bytes.size());
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end() - 24, anew.begin()));
}

TEST(VectorCache, TheLimitEvictsCheapEntriesFirst) {
    SortDir dir;
    RK_QuillonCache_Stuff* dear = new RK_QuillonCache_Stuff(1, {0, 1}, {1, 1}, MakeHolder(10, 10));
    RK_QuillonCache_Stuff* cheap = new RK_QuillonCache_Stuff(1, {1, 1}, {2, 1}, MakeHolder(10, 10));
    ASSERT_EQ(dear->AddToBagAndSortDir(STASH_GlobalBag(), 1000, dir), 0);
    ASSERT_EQ(cheap->AddToBagAndSortDir(STASH_GlobalBag(), 1, dir), 0);
    {
        STASH_ScCheckout hold;
        hold.FindAndCheckout(dir, *cheap, 3, 0);
        ASSERT_TRUE(hold.DidCheckout());
        RefHost::SetStashLimit(1);  // the one in use stays
        EXPECT_TRUE(cheap->IsLoaded());
        EXPECT_FALSE(dear->IsLoaded());
    }
    EXPECT_FALSE(cheap->IsLoaded());
    RefHost::SetStashLimit(int64_t{512} << 20);
    STASH_ScCheckout none;
    none.FindAndCheckout(nullptr, *dear, 3, 0);
    EXPECT_FALSE(none.DidCheckout());
}

}  // namespace
