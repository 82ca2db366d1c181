package com.varden.tavo.iscsi.hba;

import java.util.ArrayList;
import java.util.Collection;
import java.util.List;

/** What somebody may have meant who mistyped a word. */
final class Suggestions {
    private Suggestions() {}

    /** The words that are nearest, when they are near: one slip, or one for each three characters. */
    static List<String> nearest(String typed, Collection<String> words) {
        List<String> nearest = new ArrayList<>();
        int least = Math.max(1, typed.replace("-", "").length() / 3);
        for (String word : words) {
            int slips = slips(typed, word);
            if (slips < least) {
                nearest.clear();
                least = slips;
            }
            if (slips == least) {
                nearest.add(word);
            }
        }
        return nearest;
    }

    // How many characters were left out, added, mistaken, or exchanged with their neighbour.
    private static int slips(String typed, String word) {
        int[][] slips = new int[typed.length() + 1][word.length() + 1];
        for (int i = 0; i <= typed.length(); i++) {
            for (int j = 0; j <= word.length(); j++) {
                if (i == 0 || j == 0) {
                    slips[i][j] = i + j;
                    continue;
                }
                boolean same = typed.charAt(i - 1) == word.charAt(j - 1);
                slips[i][j] = Math.min(slips[i - 1][j - 1] + (same ? 0 : 1),
                    1 + Math.min(slips[i - 1][j], slips[i][j - 1]));
                if (i > 1 && j > 1 && typed.charAt(i - 1) == word.charAt(j - 2)
                    && typed.charAt(i - 2) == word.charAt(j - 1)) {
                    slips[i][j] = Math.min(slips[i][j], 1 + slips[i - 2][j - 2]);
                }
            }
        }
        return slips[typed.length()][word.length()];
    }
}
