// The message table against its own list of texts: every number, every character.
#include <climits>
#include <iterator>
#include <map>
#include <string>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

struct Message {
  int id;
  char const* text;
};

constexpr Message kMessages[] = {
    {6100, "String Table of OrbImg"},
    {6101, "Lチャンネルを作成中..."},
    {6102, "abチャンネルを作成中..."},
    {6103, "LRGB合成処理中..."},
    {6104, "ウィーナーフィルタ処理中..."},
    {6105, "フラット補正処理中..."},
    {6106, "ダーク補正処理中..."},
    {6107, "コンポジット処理中..."},
    {6108, "RGB合成処理中..."},
    {6109, "演算処理中..."},
    {6110, "解像度変更処理中..."},
    {6111, "サイズ変更処理中..."},
    {6112, "回転処理中..."},
    {6113, "レベル調整処理中..."},
    {6114, "トーンカーブ調整処理中..."},
    {6115, "明るさ／コントラスト処理中..."},
    {6116, "デジタル現像処理中..."},
    {6117, "疑似カラー処理中..."},
    {6118, "カラーバランス処理中..."},
    {6119, "平均化フィルタ処理中..."},
    {6120, "中央値フィルタ処理中"},
    {6121, "シャープフィルタ処理中"},
    {6122, "アンシャープマスク処理中..."},
    {6123, "バックグランドスムース処理中..."},
    {6124, "反転処理中..."},
    {6125, "デジタル現像処理準備中..."},
    {6126, "フィルタ処理準備中..."},
    {6127, "上下反転処理中..."},
    {6128, "左右反転処理中..."},
    {6129, "モノクロモード変換処理中..."},
    {6130, "カラーモード変換処理中..."},
    {6131, "ガウスフィルタ処理中..."},
    {6132, "ソフトビニング処理中..."},
    {6133, "Labチャンネルを作成中..."},
    {6134, "Lab色彩調整処理中..."},
    {6135, "モザイク合成中..."},
    {6136, "CMY合成処理中..."},
    {6137, "RGB３色分解中"},
    {6138, "CMY３色分解中"},
    {6139, "周辺減光補正中..."},
    {6140, "展開中..."},
    {6141, "中央値コンポジット処理中..."},
    {6142, "シャープ（輪郭のみ）処理中..."},
    {6143, "輪郭検出処理中..."},
    {6144, "階調減処理中..."},
    {6146, "スクロール処理中..."},
    {6148, "メモリが不足しています。起動しているアプリケーションをいくつか終了してから、再度実行してください。"},
    {6149, "キャンセルされました。"},
    {6150, "メモリが不足しています。起動しているアプリケーションをいくつか終了してから、再度実行してください。"},
    {6151, "キャンセルされました。"},
    {6152, "画像マッチング処理中..."},
    {6153, "ミニマム／マキシマムフィルター処理中..."},
    {6154, "ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 準備中"},
    {6155, "ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 準備中 プレーン %d"},
    {6156, "ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 処理中 %d回目"},
    {6157, "ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 処理中 プレーン %d (%d回目)"},
    {6158, "最大エントロピー法 - 準備中"},
    {6159, "最大エントロピー法 - 準備中 プレーン %d"},
    {6160, "最大エントロピー法(ESC：ｷｬﾝｾﾙ) - 処理中 %d回目"},
    {6161, "最大エントロピー法(ESC：ｷｬﾝｾﾙ) - 処理中 プレーン %d (%d回目)"},
    {6162, "最大エントロピー法(ESC：ｷｬﾝｾﾙ) - 前処理中"},
    {6163, "最大エントロピー法(ESC：ｷｬﾝｾﾙ) - 前処理中 プレーン %d"},
    {6164, "ホット／クールピクセル除去処理中..."},
    {6165, "スターシャープフィルタ処理中..."},
    {6166, "ヒストグラム計算中..."},
    {6167, "自動レベル設定値計算中..."},
    {6168, "自動レベル設定中..."},
    {6169, "準備中..."},
    {6170, "画像プレーン変更中..."},
    {6171, "等濃度曲線検出中..."},
    {6172, "切り抜き処理中..."},
    {6173, "スターエンハンス処理中..."},
    {6174, "ネビュラスムース処理中..."},
    {6175, "カスタムフィルター処理中..."},
    {6176, "ローテーショナル・グラデーション処理中..."},
    {6177, "ヒストグラム・イコライゼーション処理中..."},
    {6180, "マスクパターン作成中..."},
    {6181, "マスクパターン処理中..."},
    {6182, "スカイ中央値計算中..."},
    {6183, "スカイフラット作成中..."},
};

constexpr int kUnassigned[] = {6145, 6147, 6178, 6179};

TEST(MessageTable, HoldsEightyTexts) {
  int texts = 0;
  for (int id = 6000; id < 6300; ++id) texts += *LoadString(id) != '\0' ? 1 : 0;
  EXPECT_EQ(80, texts);
  EXPECT_EQ(80u, std::size(kMessages));
}

TEST(MessageTable, EveryTextStandsExactly) {
  for (Message const& message : kMessages) EXPECT_STREQ(message.text, LoadString(message.id)) << message.id;
}

TEST(MessageTable, StartsAndEndsWhereItShould) {
  EXPECT_STREQ("String Table of OrbImg", LoadString(6100));
  EXPECT_STREQ("スカイフラット作成中...", LoadString(6183));
  EXPECT_STREQ("", LoadString(6099));
  EXPECT_STREQ("", LoadString(6184));
}

TEST(MessageTable, UnassignedNumbersAreEmpty) {
  for (int id : kUnassigned) EXPECT_STREQ("", LoadString(id)) << id;
  for (int id : {0, -1, 1, INT_MIN, INT_MAX}) EXPECT_STREQ("", LoadString(id)) << id;
}

// Intended: a few texts carry no dots.
TEST(MessageTable, FourRunsHaveNoDots) {
  for (int id : {6120, 6121, 6137, 6138}) {
    std::string const text = LoadString(id);
    EXPECT_EQ(std::string::npos, text.find('.')) << id;
    EXPECT_TRUE(text.ends_with("中")) << id;
  }
}

TEST(MessageTable, OnlyRestorationTextsAreFilledIn) {
  std::map<int, int> numbers = {{6155, 1}, {6156, 1}, {6157, 2}, {6159, 1}, {6160, 1}, {6161, 2}, {6163, 1}};
  for (Message const& message : kMessages) {
    std::string const text = LoadString(message.id);
    int found = 0;
    for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
      EXPECT_EQ('d', text.at(at + 1)) << message.id;
      ++found;
    }
    EXPECT_EQ(numbers[message.id], found) << message.id;
  }
}

TEST(MessageTable, BoxesOfBothRestorationsSayTheSame) {
  EXPECT_STREQ(LoadString(6148), LoadString(6150));
  EXPECT_STREQ(LoadString(6149), LoadString(6151));
}

}  // namespace
}  // namespace orb::test
