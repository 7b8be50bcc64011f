model M; real x; rates :={{x'==x},{}};
